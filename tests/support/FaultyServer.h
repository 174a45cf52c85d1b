#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace qorix::test {

/// Answers each request on 127.0.0.1 with the bytes that a test wants, then ends the connection in
/// the way that it wants. One thread; ends with the object.
class FaultyServer {
 public:
  enum class Ending { cut, reset, stall };

  struct Answer {
    std::string bytes;
    Ending ending = Ending::cut;
    bool isEndless = false;  // the bytes, then their part from `repeated` on without end
    std::size_t repeated = 0;
  };

  /// Called on the server's thread with the path of the request.
  using Handler = std::function<Answer(const std::string&)>;

  explicit FaultyServer(Handler handler) : handler_(std::move(handler)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(listener_, 128) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("no server");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
  }
  FaultyServer(const FaultyServer&) = delete;
  FaultyServer& operator=(const FaultyServer&) = delete;
  ~FaultyServer() {
    isStopped_ = true;
    thread_.join();
    for (const int connection : stalled_) {
      ::close(connection);
    }
    ::close(listener_);
  }

  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

 private:
  static constexpr int kLookMilliseconds = 20;
  static constexpr std::size_t kMostStalled = 64;

  void run() {
    while (!isStopped_) {
      pollfd ready{listener_, POLLIN, 0};
      if (::poll(&ready, 1, kLookMilliseconds) > 0) {
        serve(::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
      }
    }
  }

  void serve(int connection) {
    const Answer answer = handler_(readPath(connection));
    bool isOpen = send(connection, answer.bytes);
    while (isOpen && answer.isEndless && !isStopped_) {
      isOpen = send(connection, std::string_view(answer.bytes).substr(answer.repeated));
    }
    if (answer.ending == Ending::stall) {
      keep(connection);
      return;
    }
    const linger drop{1, 0};
    if (answer.ending == Ending::reset) {
      ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &drop, sizeof drop);
    }
    ::close(connection);
  }

  /// Keeps a silent connection open; the oldest one goes when there are many.
  void keep(int connection) {
    stalled_.push_back(connection);
    if (stalled_.size() > kMostStalled) {
      ::close(stalled_.front());
      stalled_.pop_front();
    }
  }

  static std::string readPath(int connection) {
    std::string request;
    std::array<char, 4096> piece{};
    while (request.find("\r\n\r\n") == std::string::npos) {
      const ssize_t size = ::recv(connection, piece.data(), piece.size(), 0);
      if (size <= 0) {
        return {};
      }
      request.append(piece.data(), static_cast<std::size_t>(size));
    }
    const std::size_t begin = request.find(' ') + 1;
    return request.substr(begin, request.find(' ', begin) - begin);
  }

  static bool send(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t size = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (size < 0) {
        return false;
      }
      bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
  }

  const Handler handler_;
  const int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::uint16_t port_ = 0;
  std::deque<int> stalled_;
  std::atomic<bool> isStopped_ = false;
  std::thread thread_;
};

}  // namespace qorix::test
