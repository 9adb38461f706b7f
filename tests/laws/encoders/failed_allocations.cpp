// Every single allocation of unmarshal, clone and from_xml failing in turn: error 12, nothing lost,
// and a record that can be used and destroyed.
#include <functional>
#include <set>

#include "behaviour/encoders/values.h"

namespace {

using namespace encoders;

constexpr uint32_t elements = 3;

// What one call allocates for the arrays of a record: a block for each, and with tracking one for
// its state bytes.
unsigned array_blocks(const wayfind_record& record, bool tracking) {
  unsigned result = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    const bool array = field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
    result += array ? (tracking ? 2U : 1U) : 0U;
    if (field.record != nullptr) {
      result += array_blocks(*field.record, tracking) * (array ? elements : 1);
    }
  }
  return result;
}

class FailedAllocations : public testing::TestWithParam<unsigned> {
 protected:
  const Calls& calls() const { return all_records()[GetParam()]; }

  // Makes a record with arrays of that length and runs a call on it with the first, the second,
  // ... allocation in it failing, until it gets through without one. Gives how many failed.
  unsigned fail_each(const Handle& handle, const std::function<uint32_t(Object&)>& call,
                     uint32_t before = 0) const {
    for (unsigned nth = 1;; ++nth) {
      Object object = filled(handle, calls(), before);
      const uint64_t refused = handle.memory().refusals;
      ork_handle_fail_allocation(handle, nth);
      const uint32_t err = call(object);
      ork_handle_fail_allocation(handle, 0);
      if (handle.memory().refusals == refused) {
        EXPECT_EQ(err, 0u);
        return nth - 1;
      }
      EXPECT_EQ(err, 12u) << "allocation " << nth;
      if (object.get() != nullptr) {
        (void)printed(handle, calls(), object.get());
        (void)as_xml(handle, calls(), object.get());
        (void)marshalled(handle, calls(), object.get());
        (void)calls().hash(object.get(), 0);
      }
    }
  }
};

TEST_P(FailedAllocations, in_unmarshal_leaves_a_record_that_can_be_used) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    for (const uint32_t reuse : {0U, 1U}) {
      const Handle handle(tracking);
      const Bytes image = marshalled(handle, calls(), filled(handle, calls(), elements).get());
      const unsigned failed = fail_each(handle, [&](Object& object) {
        uint32_t err = 0;
        calls().unmarshal(handle, instance, image.data(), object.get(),
                          static_cast<int32_t>(image.size()), reuse, &err);
        EXPECT_EQ(ork_handle_last_error(handle), err);
        return err;
      });
      EXPECT_EQ(failed, array_blocks(*calls().schema, tracking == ORK_TRACKING_ON));
    }
  }
}

TEST_P(FailedAllocations, in_unmarshal_into_a_filled_record_leaves_one_that_can_be_used) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    for (const uint32_t before : {1U, elements}) {
      const Handle handle(tracking);
      const Bytes image = marshalled(handle, calls(), filled(handle, calls(), elements).get());
      const auto call = [&](Object& object) {
        uint32_t err = 0;
        calls().unmarshal(handle, instance, image.data(), object.get(),
                          static_cast<int32_t>(image.size()), 1, &err);
        return err;
      };
      fail_each(handle, call, before);
    }
  }
}

// A peer that lacks the type makes the clone's target one of no field, until it has been read to
// its end.
TEST_P(FailedAllocations, in_clone_leaves_no_object) {
  const TypeList lacking = release_list(9, calls().name(), -1);
  for (const bool lacks : {false, true}) {
    for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle handle(tracking);
      const Object source = filled(handle, calls(), elements);
      handle.set_peer(lacks ? lacking.get() : nullptr);
      Bytes workspace(ample + 1);
      const unsigned failed = fail_each(handle, [&](Object&) {
        uint32_t err = 0;
        void* slot = nullptr;
        calls().clone(handle, instance, source.get(), &slot, workspace.data(), ample, &err);
        EXPECT_EQ(slot == nullptr, err != 0);
        EXPECT_EQ(ork_handle_last_error(handle), err);
        if (slot != nullptr) {
          calls().destroy(handle, instance, slot);
        }
        return err;
      });
      EXPECT_EQ(failed, 1 + array_blocks(*calls().schema, tracking == ORK_TRACKING_ON))
          << "the object's own block too";
    }
  }
}

// An element is a fresh one of no field, too, when the peer lacks its type; whatever had been read
// into it goes when it is made anew.
TEST_P(FailedAllocations, in_clone_to_an_element_loses_nothing) {
  for (unsigned i = 0; i < calls().schema->field_count; ++i) {
    const wayfind_field& field = calls().schema->fields[i];
    if (field.cls != WAYFIND_RECORD_ARRAY) {
      continue;
    }
    const Calls& inner = calls_of(field.record->name);
    const TypeList lacking = release_list(9, inner.name(), -1);
    for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle handle(tracking);
      const Object source = filled(handle, inner, elements);
      handle.set_peer(lacking.get());
      auto* const set = function<uint32_t(ork_handle*, void*, uint32_t, const void*, uint32_t)>(
          field.functions, "_set_cr");
      const unsigned failed = fail_each(handle, [&](Object& object) {
        const uint32_t err = set(handle, object.get(), 0, source.get(), 0);
        handle->cr_error = 0;
        return err;
      });
      const bool tracked = tracking == ORK_TRACKING_ON;
      EXPECT_EQ(failed, (tracked ? 2U : 1U) + array_blocks(*inner.schema, tracked))
          << "what the array itself takes too";
    }
  }
}

TEST_P(FailedAllocations, in_clone_to_a_callers_object_destroys_that) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const Object source = filled(handle, calls(), elements);
    Bytes workspace(ample + 1);
    fail_each(handle, [&](Object& object) {
      uint32_t err = 0;
      void* slot = object.release();
      calls().clone_internal(handle, instance, source.get(), &slot, workspace.data(), ample, &err);
      EXPECT_EQ(slot == nullptr, err != 0);
      EXPECT_EQ(ork_handle_last_error(handle), err);
      if (slot != nullptr) {
        calls().destroy(handle, instance, slot);
      }
      return err;
    });
  }
}

// Raises a record and all that it holds to their newest variants, so that destroying it reaches
// every field.
void raise(const Handle& handle, const wayfind_record& record, void* object) {
  static_cast<ork_object*>(object)->variant = static_cast<int8_t>(record.variants - 1);
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_OBJECT && field.record != nullptr) {
      raise(handle, *field.record, static_cast<uint8_t*>(object) + field.offset);
    } else if (field.cls == WAYFIND_RECORD_ARRAY) {
      auto* const get = function<void*(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>(
          field.functions, "_get");
      uint32_t err = 0;
      void* element;
      for (uint32_t n = 0; (element = get(handle, instance, object, n, &err)) != nullptr; ++n) {
        raise(handle, *field.record, element);
      }
      EXPECT_EQ(err, 2u) << "behind the last element";
    }
  }
}

// A document may hold fields that an older release's records do not know: they are read all the
// same. None may be lost with a scratch element.
TEST_P(FailedAllocations, in_from_xml_keeps_what_was_read) {
  const std::string path = std::string("//") + calls().name();
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle newest(tracking);
    const Document document =
        parsed(as_xml(newest, calls(), filled(newest, calls(), elements).get()));
    for (const unsigned release : std::set{deepest_variant(*calls().schema), 0U}) {
      const TypeList known = release_list(release);
      const Handle handle([&](ork_options& options) {
        options.tracking = tracking;
        options.release = known.get();
      });
      const unsigned failed = fail_each(handle, [&](Object& object) {
        uint32_t err = 0;
        calls().from_xml(handle, instance, path.c_str(), document.get(), object.get(), &err,
                         nullptr, 0);
        raise(handle, *calls().schema, object.get());
        return err;
      });
      EXPECT_EQ(failed == 0, !holds_arrays(*calls().schema));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Records, FailedAllocations, testing::Range(0U, wayfind_record_count),
                         short_name);

}  // namespace
