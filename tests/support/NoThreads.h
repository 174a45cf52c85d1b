#pragma once

#include <pthread.h>

#include <cstddef>

namespace qorix {

/// As long as it lives, no thread can be made in this process: each would have a stack larger than
/// all the addresses that there are.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 48);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;
  ~NoThreads() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }

 private:
  pthread_attr_t before_;
};

}  // namespace qorix
