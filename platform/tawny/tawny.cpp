#include "ork/tawny.h"

#include <algorithm>
#include <cinttypes>
#include <mutex>
#include <new>
#include <vector>

#include "ork/platform.h"
#include "support/export.h"

namespace {

thread_local uint32_t next_tag = 0;

struct Account {
  uint32_t tag;
  int64_t bytes;
  int64_t blocks;
};

// Sorted by tag. Tags come from a handful of sites, so a vector under a lock beats anything
// cleverer.
class Ledger {
 public:
  void add(uint32_t tag, int64_t bytes, int64_t blocks) {
    const std::lock_guard lock(mutex_);
    auto at = std::lower_bound(
        accounts_.begin(), accounts_.end(), tag,
        [](const Account& account, uint32_t wanted) { return account.tag < wanted; });
    if (at == accounts_.end() || at->tag != tag) {
      try {
        at = accounts_.insert(at, Account{tag, 0, 0});
      } catch (const std::bad_alloc&) {
        return;  // bookkeeping only: an account that cannot be opened is not kept
      }
    }
    at->bytes += bytes;
    at->blocks += blocks;
  }

  template <typename Visit>
  void each(Visit visit) const {
    const std::lock_guard lock(mutex_);
    for (const Account& account : accounts_) {
      visit(account);
    }
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Account> accounts_;
};

// Never destroyed: blocks may still come back while the process winds down.
Ledger& ledger() {
  static Ledger* const instance = new Ledger;
  return *instance;
}

}  // namespace

extern "C" {

ORK_EXPORT void tawny_set_callsite_tag(uint32_t tag) { next_tag = tag; }

ORK_EXPORT uint32_t tawny_take_callsite_tag() {
  const uint32_t tag = next_tag;
  next_tag = 0;
  return tag;
}

ORK_EXPORT void tawny_account(uint32_t tag, int64_t bytes, int64_t blocks) {
  ledger().add(tag, bytes, blocks);
}

ORK_EXPORT void tawny_each(void (*visit)(void* ctx, uint32_t tag, int64_t bytes, int64_t blocks),
                           void* ctx) {
  ledger().each(
      [&](const Account& account) { visit(ctx, account.tag, account.bytes, account.blocks); });
}

ORK_EXPORT void tawny_print(FILE* stream) {
  ledger().each([&](const Account& account) {
    std::fprintf(stream, "tag 0x%08" PRIx32 " bytes %" PRId64 " blocks %" PRId64 "\n", account.tag,
                 account.bytes, account.blocks);
  });
}

}  // extern "C"
