#include "support.h"

namespace platform_test {
namespace {

struct alignas(8) Object {
  ork_object header{};
  int destroyed = 0;
};

void destroy(ork_handle*, uint32_t, void* obj) { static_cast<Object*>(obj)->destroyed += 1; }

TEST(Oid, without_references_the_mapping_goes_at_once) {
  const Handle handle;
  Object object;
  uint32_t err = 0;
  void* oid = ork_oid_map(handle.get(), 0, &object, destroy, &err);
  EXPECT_EQ(object.header.obj_flags, OBJ_OID_MAPPED);
  EXPECT_EQ(ork_oid_object(handle.get(), oid), &object);
  EXPECT_EQ(ork_request_oid_mapping_destroy(handle.get(), 0, &object, &err), 1u);
  EXPECT_EQ(object.header.obj_flags, 0);
  EXPECT_EQ(ork_oid_object(handle.get(), oid), nullptr);
  EXPECT_EQ(object.destroyed, 0) << "the caller does that";
}

TEST(Oid, referenced_object_is_destroyed_when_the_last_one_goes) {
  const Handle handle;
  Object object;
  uint32_t err = 0;
  void* oid = ork_oid_map(handle.get(), 0, &object, destroy, &err);
  ork_oid_hold(handle.get(), oid, &err);
  ork_oid_hold(handle.get(), oid, &err);
  EXPECT_EQ(ork_request_oid_mapping_destroy(handle.get(), 0, &object, &err), 0u);
  orklib_lookup_and_update_oid_ref_count(handle.get(), 0, oid, 0, &err);
  EXPECT_EQ(object.destroyed, 0);
  orklib_lookup_and_update_oid_ref_count(handle.get(), 0, oid, 0, &err);
  EXPECT_EQ(object.destroyed, 1);
  EXPECT_EQ(err, 0u);
  orklib_lookup_and_update_oid_ref_count(handle.get(), 0, oid, 0, &err);
  EXPECT_EQ(err, 2u);
}

TEST(Oid, wrong_calls_are_refused) {
  const Handle handle;
  Object object;
  uint32_t err = 0;
  ork_request_oid_mapping_destroy(handle.get(), 0, &object, &err);
  EXPECT_EQ(err, 2u);
  err = 0;
  ork_oid_map(handle.get(), 0, &object, destroy, &err);
  EXPECT_EQ(ork_oid_map(handle.get(), 0, &object, destroy, &err), nullptr);
  EXPECT_EQ(err, 17u);
}

}  // namespace
}  // namespace platform_test
