#pragma once

#include <exception>
#include <string>
#include <type_traits>

#include <qorix/platform/Log.h>

namespace qorix {

/// Logs the exception that is being handled, one line. Call it in a `catch (...)` only. Never
/// throws, not even when there is no memory left for the line. Any thread.
inline void logStoppedException() noexcept {
  const auto log = [](const char* reason) {
    logLine(std::string("ZAM An exception was stopped: ") + reason);
  };
  try {
    try {
      throw;
    } catch (const std::exception& exception) {
      log(exception.what());
    } catch (...) {
      log("of an unknown kind");
    }
  } catch (...) {  // there is no memory for the line
    return;
  }
}

namespace detail {

template <auto kFunction, auto kFallback>
struct Guarded;

template <class Result, class... Arguments, Result (*kFunction)(Arguments...), auto kFallback>
struct Guarded<kFunction, kFallback> {
  static Result call(Arguments... arguments) noexcept {
    try {
      return kFunction(arguments...);
    } catch (...) {
      logStoppedException();
    }
    if constexpr (!std::is_void_v<Result>) {
      return static_cast<Result>(kFallback);
    }
  }
};

}  // namespace detail

/// A function for C code to call, through whose frames no exception may pass: it does what
/// `kFunction` does, and stops and logs what that throws; its result is then `kFallback`. As in
/// `g_signal_connect(widget, "destroy", G_CALLBACK(guarded<onDestroy>), this)`.
template <auto kFunction, auto kFallback = 0>
inline constexpr auto guarded = &detail::Guarded<kFunction, kFallback>::call;

/// Calls `work`, which may throw whatever it likes: that is stopped and logged.
template <class Work>
void callGuarded(Work&& work) noexcept {
  try {
    work();
  } catch (...) {
    logStoppedException();
  }
}

}  // namespace qorix
