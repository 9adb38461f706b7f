// A lock in memory that processes share.
#pragma once

#include <pthread.h>

#include <cerrno>
#include <system_error>

namespace ork {

// What it guards may be half changed when its holder dies, and nothing tells how far it came. Every
// later attempt to take it is then refused, in every process and for good, rather than waiting
// forever or going on with what is there.
class RobustLock {
 public:
  RobustLock() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
  }
  RobustLock(const RobustLock&) = delete;
  RobustLock& operator=(const RobustLock&) = delete;

  // Throws std::system_error, ENOTRECOVERABLE when a holder died.
  void lock() {
    int result = pthread_mutex_lock(&mutex_);
    if (result == EOWNERDEAD) {
      // given up without being made consistent: the refusal is for good
      pthread_mutex_unlock(&mutex_);
      result = ENOTRECOVERABLE;
    }
    if (result != 0) {
      throw std::system_error(result, std::generic_category());
    }
  }

  void unlock() { pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_;
};

}  // namespace ork
