// Announce before store: whatever changes in a live object lies in a range that was announced
// before it changed.
#include "laws/frame/announce_watch.h"
#include "laws/frame/calls.h"

namespace frame {

namespace {

// Stores that are made without a word, by the end of the function's name. An array's _set_cr with
// use_set 0 is left to encoders_announce.cpp: it reads the element from a wire image, and there the
// primitives store silently.
const std::set<std::string> silent = {
    "_set_all_state_tracking_flag", /* the whole state block in one fill */
    "_state_flag_set_arr",          /* the bytes at the start of an array's entry */
};

}  // namespace

TEST(Announce, accessors_store_nothing_that_was_not_announced) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      for (const uint64_t index : {0u, 4u}) {
        if (index != 0 && !f.is_array()) {
          continue;
        }
        Outputs out;
        // One call for each fresh object, so that what one leaves is not in another's way.
        size_t count = 1;
        for (size_t i = 0; i < count; ++i) {
          SpiedObject obj(h, f.type);
          Source src(h, f);
          if (f.is_array()) {
            f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
            if (f.told.cls == Class::record_array) {
              fill_arrays(h, type(f.told.type), src.word());
            }
          } else if (f.is_record()) {
            fill_arrays(h, type(f.told.type), src.word());
          }
          ASSERT_EQ(h.err, 0u) << f.name();
          const auto calls = accessors(f, h, obj.get(), src, index, out);
          count = calls.size();
          const bool by_clone =
              f.told.cls == Class::record_array && calls[i].cr && calls[i].words.back() == 0;
          if (silent.contains(calls[i].suffix) || by_clone) {
            continue;
          }
          {
            spy::Log log;
            Watch watch(log);
            watch_object(watch, h, f.type, obj.get());
            if (f.is_record()) {
              watch_object(watch, h, type(f.told.type), reinterpret_cast<void*>(src.word()));
            }
            if (f.told.cls == Class::text && calls[i].suffix.starts_with("_set")) {
              // The end of a shorter text comes behind the mark without a word.
              watch.allow(bytes(obj.get()) + f.told.offset + (calls[i].cr ? 4 : 3), 1);
            }
            f.call(calls[i].suffix, calls[i].words);
            watch.check();
            EXPECT_TRUE(watch.unannounced().empty())
                << f.name() << calls[i].suffix << " (" << index << "), " << mode.text() << ":"
                << list(watch.unannounced());
          }
          h.err = 0;
          h->cr_error = 0;
        }
      }
    });
  }
}

TEST(Announce, functions_of_the_whole_record_store_nothing_that_was_not_announced) {
  for (const Mode& mode : kit::all_modes()) {
    for (const Type& type : types()) {
      for (const char* const suffix : {"_set", "_post_copyout_cleanup", "_set_all",
                                       "_set_instance_embedded", "_adjust_variant"}) {
        SpiedHandle h(mode);
        h.expect_leaks(); /* cleanup without the copy before it lets arrays go */
        SpiedObject obj(h, type);
        SpiedObject src(h, type, "src");
        fill_arrays(h, type, src.word());
        ASSERT_EQ(h.err, 0u);
        std::vector<uint64_t> words = {word(h), instance, obj.word()};
        const std::string name = suffix;
        if (name == "_set" || name == "_post_copyout_cleanup") {
          words.push_back(src.word());
        } else if (name == "_set_all") {
          for (const told::Field& field : type.told.fields) {
            if (field.cls == Class::value) {
              words.push_back(1);
            }
          }
        } else if (name == "_adjust_variant") {
          header(obj.get()).variant = 0;
        }
        if (name != "_set_instance_embedded") {
          words.push_back(word(&h.err));
        }
        spy::Log log;
        Watch watch(log);
        watch_object(watch, h, type, obj.get());
        watch_object(watch, h, type, src.get());
        type.call(suffix, words);
        watch.check();
        EXPECT_EQ(h.err, 0u) << type.told.name << suffix;
        EXPECT_TRUE(watch.unannounced().empty())
            << type.told.name << suffix << ", " << mode.text() << ":" << list(watch.unannounced());
      }
    }
  }
}

TEST(Announce, initialize_with_notify_stores_nothing_that_was_not_announced) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    kit::function<void*(ork_handle*, uint32_t)>(
        types()[0].schema.functions, "_create"); /* the table is filled by the first object */
    for (const Type& type : types()) {
      std::vector<uint64_t> block(type.told.newest().body / 8 + type.told.newest().state / 8 + 2,
                                  0);
      void* const obj = block.data();
      spy::name(obj, block.size() * 8, "obj");
      {
        spy::Log log;
        Watch watch(log);
        watch.region(obj, block.size() * 8);
        type.call("_initialize",
                  {word(h), instance, word(obj), word(type.schema.type), 1, 0, 0, 0, word(&h.err)});
        watch.check();
        EXPECT_EQ(h.err, 0u) << type.told.name;
        EXPECT_TRUE(watch.unannounced().empty())
            << type.told.name << ", " << mode.text() << ":" << list(watch.unannounced());
      }
      kit::function<void(ork_handle*, uint32_t, void*, uint32_t)>(
          type.schema.functions, "_destroy_internal")(h, instance, obj, 0);
    }
  }
}

TEST(Announce, destroy_in_place_and_removal_clear_nothing_silently_but_the_element_bytes_pointer) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      void* const obj = type.create(h);
      spy::name(obj, type.size(h), "obj");
      fill_arrays(h, type, word(obj));
      {
        spy::Log log;
        Watch watch(log);
        watch.region(obj, type.size(h));
        if (h.tracking()) {
          allow_element_pointers(watch, type.told, bytes(obj) + type.told.newest().body);
        }
        kit::function<void(ork_handle*, uint32_t, void*, uint32_t)>(
            type.schema.functions, "_destroy_internal")(h, instance, obj, 0);
        watch.check();
        EXPECT_TRUE(watch.unannounced().empty())
            << type.told.name << ", " << mode.text() << ":" << list(watch.unannounced());
      }
      h->free_fn(h->mem_pool, instance, obj);
    }
  }
}

TEST(Announce, removal_of_elements_clears_pointer_and_count_behind_their_announcements) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_array([&](const Field& f) {
      SpiedObject obj(h, f.type);
      fill_arrays(h, f.type, obj.word());
      ASSERT_EQ(h.err, 0u) << f.name();
      spy::Log log;
      Watch watch(log);
      watch_object(watch, h, f.type, obj.get());
      f.call("_remove_elements", {word(h), instance, obj.word()});
      watch.check();
      EXPECT_TRUE(watch.changed()) << f.name();
      EXPECT_TRUE(watch.unannounced().empty())
          << f.name() << ", " << mode.text() << ":" << list(watch.unannounced());
    });
  }
}

TEST(Announce, the_silent_stores_are_silent) {
  SpiedHandle h(kit::tracked);
  for (const Type& type : types()) {
    SpiedObject obj(h, type);
    spy::Log log;
    type.call("_set_all_state_tracking_flag", {word(h), instance, obj.word(), 3});
    EXPECT_EQ(log.announcements().size(), 0u) << type.told.name;
    EXPECT_TRUE(std::all_of(obj.state(), obj.state() + type.told.newest().state, [](uint8_t b) {
      return b == 3;
    })) << type.told.name;
    type.call("_set_all_state_tracking_flag", {word(h), instance, obj.word(), 0});
  }
}

}  // namespace frame
