// Names, identifiers, descriptors and bundle tables of all messages, held against the agreed ones.
#include <dlfcn.h>

#include <algorithm>
#include <set>

#include "behaviour/bundles/family.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "ork/show_core.h"
#include "support/told_tables.h"

namespace {

std::vector<uint8_t> bytes_of(std::string_view hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(std::string(hex.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

template <typename Object>
const Object* exported(const std::string& name) {
  return static_cast<const Object*>(dlsym(RTLD_DEFAULT, name.c_str()));
}

// The three objects that every message exports.
void expect_identity(const std::string& name, const std::string& hex) {
  const auto* luid = exported<uint8_t>("message_" + name + "_luid");
  const auto* text = exported<char>("message_" + name + "_luid_text");
  const auto* label = exported<char>("message_" + name + "_name");
  ASSERT_TRUE(luid != nullptr && text != nullptr && label != nullptr) << name;
  EXPECT_EQ(std::vector<uint8_t>(luid, luid + messages::luid_size), bytes_of(hex)) << name;
  EXPECT_EQ(text, hex);
  EXPECT_EQ(label, "message " + name);
}

TEST(Tables, twenty_eight_in_definition_order) {
  ASSERT_EQ(wayfind_message_count, 28u);
  ASSERT_EQ(told::tables().messages.size(), 28u);
  for (size_t i = 0; i < 28; ++i) {
    EXPECT_EQ(wayfind_messages[i].name, told::tables().messages[i].name);
  }
}

TEST(Tables, records_in_wire_order) {
  for (size_t i = 0; i < 28; ++i) {
    const wayfind_message& message = wayfind_messages[i];
    const std::vector<told::Carried>& records = told::tables().messages[i].records;
    ASSERT_EQ(message.record_count, records.size()) << message.name;
    for (size_t r = 0; r < records.size(); ++r) {
      EXPECT_EQ(message.records[r]->name, records[r].record);
    }
  }
}

TEST(Tables, call_site_tags_have_no_gap) {
  uint32_t next = 0xA0910400;
  for (size_t i = 0; i < 28; ++i) {
    EXPECT_EQ(wayfind_messages[i].call_site_tag, next) << wayfind_messages[i].name;
    for (const told::Carried& carried : told::tables().messages[i].records) {
      EXPECT_EQ(carried.tag, next++) << carried.record;
    }
  }
  EXPECT_EQ(next, 0xA091041Du);
}

TEST(Tables, identity_objects_of_messages) {
  for (const told::Message& message : told::tables().messages) {
    expect_identity(message.name, message.luid);
  }
}

TEST(Tables, identity_objects_of_control_messages) {
  for (const told::Bundle& bundle : told::tables().bundles) {
    expect_identity(bundle.name + "_bundle_start", bundle.start);
    expect_identity(bundle.name + "_bundle_abort", bundle.abort);
    expect_identity(bundle.name + "_bundle_commit", bundle.commit);
  }
}

TEST(Tables, every_identifier_is_its_own) {
  std::set<std::string> seen;
  for (const told::Message& message : told::tables().messages) {
    EXPECT_TRUE(seen.insert(message.luid).second) << message.name;
  }
  for (const told::Bundle& bundle : told::tables().bundles) {
    for (const std::string& luid : {bundle.start, bundle.abort, bundle.commit}) {
      EXPECT_TRUE(seen.insert(luid).second) << bundle.name;
    }
  }
  EXPECT_EQ(seen.size(), 82u);
}

TEST(Tables, descriptors_have_one_variant_of_the_objects_size) {
  for (const told::Message& message : told::tables().messages) {
    const std::string name = "_" + message.name + "_message_type_info_internal";
    const auto* type = exported<ork_type_info>(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_EQ(type->magic, ORK_TYPE_INFO_MAGIC) << name;
    EXPECT_EQ(std::vector<uint8_t>(type->luid, type->luid + messages::luid_size),
              bytes_of(message.luid))
        << name;
    EXPECT_EQ(type->luid_text, message.luid);
    EXPECT_EQ(type->name, message.name);
    EXPECT_STREQ(type->module, "fwe_ui_wayfind");
    EXPECT_STREQ(type->kind, "message");
    EXPECT_EQ(type->shared, 0u) << name;
    ASSERT_NE(type->varinfo, nullptr) << name;
    EXPECT_EQ(type->varinfo->n_variants, 1) << name;
    const ork_variant_entry& entry = type->varinfo->entries[0];
    EXPECT_EQ(entry.variant, 0u) << name;
    EXPECT_EQ(entry.used_length, message.records.size() == 2 ? 48u : 40u) << name;
    EXPECT_EQ(entry.alloc_slop, 0u) << name;
  }
}

TEST(Tables, every_message_has_its_whole_family) {
  for (const messages::Message& message : messages::all()) {
    size_t functions = 0;
    for (const wayfind_function* f = message.schema().functions; f->suffix != nullptr;
         ++f, ++functions) {
      const std::string name = std::string(message.name()) + "_message" + f->suffix;
      EXPECT_EQ(dlsym(RTLD_DEFAULT, name.c_str()), reinterpret_cast<void*>(f->address)) << name;
    }
    EXPECT_EQ(functions, message.record_count() == 2 ? 25u : 21u) << message.name();
  }
}

TEST(BundleTables, eighteen_in_definition_order) {
  ASSERT_EQ(wayfind_bundle_count, 18u);
  ASSERT_EQ(told::tables().bundles.size(), 18u);
  for (size_t i = 0; i < 18; ++i) {
    const told::Bundle& agreed = told::tables().bundles[i];
    EXPECT_EQ(wayfind_bundles[i].name, agreed.name);
    const std::string* const luids[] = {&agreed.start, &agreed.abort, &agreed.commit};
    for (size_t kind = 0; kind < 3; ++kind) {
      const uint8_t* luid = wayfind_bundles[i].luids[kind];
      EXPECT_EQ(std::vector<uint8_t>(luid, luid + messages::luid_size), bytes_of(*luids[kind]));
    }
  }
}

TEST(BundleTables, every_bundle_has_its_whole_family) {
  for (const messages::Bundle& bundle : messages::bundles()) {
    size_t functions = 0;
    for (const wayfind_function* f = bundle.schema().functions; f->suffix != nullptr;
         ++f, ++functions) {
      const std::string name = (f->suffix[0] == '_' ? bundle.name() : "") + std::string(f->suffix);
      EXPECT_EQ(dlsym(RTLD_DEFAULT, name.c_str()), reinterpret_cast<void*>(f->address)) << name;
    }
    EXPECT_EQ(functions, 53u) << bundle.name();
    EXPECT_EQ(dlsym(RTLD_DEFAULT,
                    ("fwe_ui_wayfind_" + std::string(bundle.name()) + "_bundle_registered_handler")
                        .c_str()),
              bundle.schema().registered);
  }
}

class BundleTable : public testing::TestWithParam<messages::Bundle> {};

TEST_P(BundleTable, leads_from_start_to_the_agreed_rows) {
  const messages::Bundle bundle = GetParam();
  const std::vector<told::Bundle>& all = told::tables().bundles;
  const auto agreed = std::find_if(
      all.begin(), all.end(), [&](const told::Bundle& each) { return each.name == bundle.name(); });
  ASSERT_NE(agreed, all.end());
  const kit::Handle handle;
  uint8_t buffer[43];
  uint32_t err = 0;
  bundle.start().marshal(handle.get(), 0, buffer, sizeof buffer, &err);
  ASSERT_EQ(err, 0u);
  const ork_bundle_message_row* row = handle->bundle_table;
  ASSERT_NE(row, nullptr);
  for (const told::Member& member : agreed->members) {
    EXPECT_EQ(row->luid, exported<uint8_t>("message_" + member.message + "_luid"));
    EXPECT_EQ(row->name, exported<char>("message_" + member.message + "_name"));
    EXPECT_EQ(row->repeatable, member.repeatable ? 1u : 0u) << member.message;
    ++row;
  }
  EXPECT_EQ((row - 1)->luid, message_ui_req_msg_luid);
  EXPECT_EQ((row - 1)->name, message_ui_req_msg_name);
  EXPECT_EQ(row->luid, nullptr);
  EXPECT_EQ(row->name, nullptr);
  EXPECT_EQ(row->repeatable, 0u);
  bundle.abort().marshal(handle.get(), 0, buffer, sizeof buffer, &err);
  EXPECT_EQ(err, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, BundleTable, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
