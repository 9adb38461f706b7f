// The module's entry in the runtime's list, from load to unload. The library is loaded by hand,
// each time afresh.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <string>

#include "ork/orklib.h"

namespace {

class Library {
 public:
  Library() : handle_(dlopen(WAYFIND_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() { close(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool loaded() const { return handle_ != nullptr; }
  void construct() const { run(DT_INIT_ARRAY); }
  void destruct() const { run(DT_FINI_ARRAY); }

  void close() {
    if (handle_ != nullptr) {
      dlclose(handle_);
    }
    handle_ = nullptr;
  }

 private:
  // The array's one entry.
  void run(ElfW(Sxword) array) const {
    link_map* map = nullptr;
    ASSERT_EQ(dlinfo(handle_, RTLD_DI_LINKMAP, &map), 0);
    for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == array) {
        reinterpret_cast<void (*const*)()>(map->l_addr + entry->d_un.d_ptr)[0]();
        return;
      }
    }
    FAIL() << "no such array";
  }

  void* handle_;
};

struct Before {
  uint32_t count = ork_module_tot_root.count;
  ork_module** tail = ork_module_tot_root.tail;
};

// What another library would do at its load.
void append(ork_module& module) {
  module.next = nullptr;
  module.prev_link = ork_module_tot_root.tail;
  *ork_module_tot_root.tail = &module;
  ork_module_tot_root.tail = &module.next;
  ++ork_module_tot_root.count;
}

void remove_last(ork_module& module) {
  ork_module_tot_root.tail = module.prev_link;
  *module.prev_link = nullptr;
  --ork_module_tot_root.count;
}

TEST(ModuleLink, load_appends_the_module_and_unload_takes_it_out) {
  const Before before;
  Library library;
  ASSERT_TRUE(library.loaded()) << dlerror();
  const ork_module* module = *before.tail;
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(std::string(module->name), "fwe_ui_wayfind");
  EXPECT_EQ(module->next, nullptr);
  EXPECT_EQ(module->prev_link, before.tail);
  EXPECT_EQ(ork_module_tot_root.tail, &module->next);
  EXPECT_EQ(ork_module_tot_root.count, before.count + 1);
  library.close();
  EXPECT_EQ(*before.tail, nullptr);
  EXPECT_EQ(ork_module_tot_root.tail, before.tail);
  EXPECT_EQ(ork_module_tot_root.count, before.count);
}

TEST(ModuleLink, list_holds_96_descriptors) {
  const Before before;
  const Library library;
  ASSERT_TRUE(library.loaded()) << dlerror();
  const ork_type_info* const* descriptor = (*before.tail)->descriptors;
  for (int i = 0; i < 96; ++i) {
    ASSERT_NE(descriptor[i], nullptr);
    EXPECT_EQ(descriptor[i]->magic, 0xbeeff00du);
    EXPECT_NE(descriptor[i]->varinfo, nullptr);
  }
  EXPECT_EQ(descriptor[96], nullptr);
}

TEST(ModuleLink, a_second_constructor_links_nothing) {
  const Before before;
  const Library library;
  ASSERT_TRUE(library.loaded()) << dlerror();
  ork_module** const tail = ork_module_tot_root.tail;
  library.construct();
  EXPECT_EQ(ork_module_tot_root.count, before.count + 1);
  EXPECT_EQ(ork_module_tot_root.tail, tail);
  EXPECT_EQ((*before.tail)->next, nullptr);
}

TEST(ModuleLink, a_second_destructor_unlinks_nothing_and_a_constructor_behind_it_links_nothing) {
  const Before before;
  const Library library;
  ASSERT_TRUE(library.loaded()) << dlerror();
  for (int i = 0; i < 2; ++i) {
    library.destruct();
    EXPECT_EQ(ork_module_tot_root.count, before.count);
    EXPECT_EQ(ork_module_tot_root.tail, before.tail);
    EXPECT_EQ(*before.tail, nullptr);
  }
  library.construct();
  EXPECT_EQ(ork_module_tot_root.count, before.count);
  EXPECT_EQ(*before.tail, nullptr);
}

TEST(ModuleLink, unload_joins_the_modules_around_it) {
  const Before before;
  ork_module first{"first", nullptr, nullptr, nullptr};
  ork_module last{"last", nullptr, nullptr, nullptr};
  append(first);
  Library library;
  ASSERT_TRUE(library.loaded()) << dlerror();
  const ork_module* module = first.next;
  append(last);
  EXPECT_EQ(module->next, &last);
  EXPECT_EQ(last.prev_link, &module->next);
  library.close();
  EXPECT_EQ(first.next, &last);
  EXPECT_EQ(last.prev_link, &first.next);
  EXPECT_EQ(ork_module_tot_root.tail, &last.next);
  EXPECT_EQ(ork_module_tot_root.count, before.count + 2);
  remove_last(last);
  remove_last(first);
}

TEST(ModuleLink, each_load_links_again) {
  const Before before;
  for (int i = 0; i < 3; ++i) {
    const Library library;
    ASSERT_TRUE(library.loaded()) << dlerror();
    EXPECT_EQ(ork_module_tot_root.count, before.count + 1);
  }
  EXPECT_EQ(ork_module_tot_root.count, before.count);
}

}  // namespace
