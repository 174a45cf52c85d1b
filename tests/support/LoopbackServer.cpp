#include "support/LoopbackServer.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace qorix {

namespace {

constexpr const char* kAddress = "127.0.0.1";

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string address(const std::string& scheme, int port, const std::string& path) {
  return scheme + "://" + kAddress + ":" + std::to_string(port) + path;
}

/// A self-signed certificate for 127.0.0.1, made on the spot.
class Certificate {
 public:
  Certificate() : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
    X509_set_version(certificate_, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate_), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate_), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate_), 3600);
    X509_set_pubkey(certificate_, key_);
    X509_NAME* name = X509_get_subject_name(certificate_);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(kAddress), -1, -1, 0);
    X509_set_issuer_name(certificate_, name);
    X509_EXTENSION* names =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
    X509_add_ext(certificate_, names, -1);
    X509_EXTENSION_free(names);
    X509_sign(certificate_, key_, EVP_sha256());
    writeFile();
  }
  Certificate(const Certificate&) = delete;
  Certificate& operator=(const Certificate&) = delete;
  ~Certificate() {
    ::unlink(file_.c_str());
    X509_free(certificate_);
    EVP_PKEY_free(key_);
  }

  X509* get() const { return certificate_; }
  EVP_PKEY* key() const { return key_; }
  const std::string& file() const { return file_; }

 private:
  void writeFile() {
    const char* folder = std::getenv("TMPDIR");
    file_ = std::string(folder == nullptr ? "/tmp" : folder) + "/qorix-certificate-XXXXXX";
    const int descriptor = ::mkstemp(file_.data());
    FILE* stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w");
    if (stream == nullptr) {
      throw std::runtime_error("no temporary file for the certificate");
    }
    PEM_write_X509(stream, certificate_);
    std::fclose(stream);
  }

  EVP_PKEY* key_;
  X509* certificate_;
  std::string file_;
};

}  // namespace

class LoopbackServer::Implementation {
 public:
  explicit Implementation(Security security) {
    if (security == Security::tls) {
      certificate_ = std::make_unique<Certificate>();
      server_ = std::make_unique<httplib::SSLServer>(certificate_->get(), certificate_->key());
    } else {
      server_ = std::make_unique<httplib::Server>();
    }
    server_->set_keep_alive_max_count(1);
    server_->set_tcp_nodelay(true);
    const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
      respond(noted(request), request.path, response);
    };
    server_->set_pre_routing_handler(
        [handle](const httplib::Request& request, httplib::Response& response) {
          if (request.method == "POST") {  // its body has not been read yet
            return httplib::Server::HandlerResponse::Unhandled;
          }
          handle(request, response);
          return httplib::Server::HandlerResponse::Handled;
        });
    server_->Post(".*", handle);
    port_ = server_->bind_to_any_port(kAddress);
    if (port_ <= 0) {
      throw std::runtime_error("no port on loopback is free");
    }
    // All threads of the server exist before a test continues: tests may forbid new ones.
    const auto hasItsThreads = std::make_shared<std::promise<void>>();
    server_->new_task_queue = [hasItsThreads] {
      auto threads = std::make_unique<httplib::ThreadPool>(CPPHTTPLIB_THREAD_POOL_COUNT);
      hasItsThreads->set_value();
      return threads.release();
    };
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    hasItsThreads->get_future().wait();
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  ~Implementation() {
    {
      const std::lock_guard lock(mutex_);
      isEnding_ = true;
      changed_.notify_all();
    }
    server_->stop();
    thread_.join();
  }

  void setHandler(const std::string& path, Handler handler) {
    const std::lock_guard lock(mutex_);
    handlers_.insert_or_assign(path, std::move(handler));
  }

  void releasePiece() {
    const std::lock_guard lock(mutex_);
    ++releasedPieces_;
    changed_.notify_all();
  }

  int port() const { return port_; }
  std::string scheme() const { return certificate_ == nullptr ? "http" : "https"; }
  std::string certificateFile() const {
    return certificate_ == nullptr ? std::string() : certificate_->file();
  }

  std::vector<Request> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  bool waitForRequests(std::size_t count, std::chrono::milliseconds limit) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return requests_.size() >= count; });
  }

 private:
  Request noted(const httplib::Request& request) {
    Request result{
        .method = request.method, .target = request.target, .headers = {}, .body = request.body};
    for (const auto& [name, value] : request.headers) {
      result.headers.insert_or_assign(lowerCase(name), value);
    }
    const std::lock_guard lock(mutex_);
    requests_.push_back(result);
    changed_.notify_all();
    return result;
  }

  Handler handlerFor(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    const auto found = handlers_.find(path);
    return found == handlers_.end() ? Handler() : found->second;
  }

  void respond(const Request& request, const std::string& path, httplib::Response& response) {
    const Handler handler = handlerFor(path);
    auto answer = std::make_shared<const Answer>(
        handler ? handler(request) : Answer{.status = 404, .body = {"<h1>Not found</h1>"}});
    response.status = answer->status;
    for (const auto& [name, value] : answer->headers) {
      response.set_header(name, value);
    }
    // A type that the HTTP library does not compress by itself.
    const bool hasType = answer->headers.contains("Content-Type");
    const std::string type = hasType ? response.get_header_value("Content-Type")
                                     : std::string("application/octet-stream");
    response.headers.erase("Content-Type");
    if (answer->isChunked) {
      response.set_chunked_content_provider(type,
                                            [this, answer](std::size_t, httplib::DataSink& sink) {
                                              const bool isWhole = send(*answer, sink);
                                              if (isWhole) {
                                                sink.done();
                                              }
                                              return isWhole;
                                            });
      return;
    }
    std::size_t size = answer->ending == Ending::complete ? 0 : 1;  // one byte that never comes
    for (const std::string& piece : answer->body) {
      size += piece.size();
    }
    if (size == 0) {
      response.set_content("", type);
      return;
    }
    response.set_content_provider(
        size, type, [this, answer](std::size_t, std::size_t, httplib::DataSink& sink) {
          return send(*answer, sink);
        });
  }

  bool send(const Answer& answer, httplib::DataSink& sink) {
    for (std::size_t i = 0; i < answer.body.size(); ++i) {
      const bool mustWait = i > 0 && answer.waitsBetweenPieces;
      if ((mustWait && !waitForRelease()) ||
          !sink.write(answer.body[i].data(), answer.body[i].size())) {
        return false;
      }
    }
    if (answer.ending == Ending::stall) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return isEnding_; });
    }
    return answer.ending == Ending::complete;
  }

  bool waitForRelease() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return releasedPieces_ > 0 || isEnding_; });
    --releasedPieces_;
    return !isEnding_;
  }

  std::unique_ptr<Certificate> certificate_;
  std::unique_ptr<httplib::Server> server_;
  int port_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::map<std::string, Handler> handlers_;
  std::vector<Request> requests_;
  int releasedPieces_ = 0;
  bool isEnding_ = false;
  std::thread thread_;
};

std::string LoopbackServer::Request::header(const std::string& lowerCaseName) const {
  const auto found = headers.find(lowerCaseName);
  return found == headers.end() ? std::string() : found->second;
}

LoopbackServer::LoopbackServer(Security security)
    : implementation_(std::make_unique<Implementation>(security)) {}
LoopbackServer::~LoopbackServer() = default;

void LoopbackServer::setAnswer(const std::string& path, Answer answer) {
  setHandler(path, [answer = std::move(answer)](const Request&) { return answer; });
}
void LoopbackServer::setHandler(const std::string& path, Handler handler) {
  implementation_->setHandler(path, std::move(handler));
}
void LoopbackServer::releasePiece() { implementation_->releasePiece(); }
int LoopbackServer::port() const { return implementation_->port(); }
std::string LoopbackServer::url(const std::string& path) const {
  return url(path, implementation_->scheme());
}
std::string LoopbackServer::url(const std::string& path, const std::string& scheme) const {
  return address(scheme, port(), path);
}
std::string LoopbackServer::certificateFile() const { return implementation_->certificateFile(); }
std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
  return implementation_->requests();
}
bool LoopbackServer::waitForRequests(std::size_t count, std::chrono::milliseconds limit) const {
  return implementation_->waitForRequests(count, limit);
}

LoopbackServer::Answer LoopbackServer::redirect(const std::string& location, int status) {
  return {.status = status,
          .headers = {{"Location", location}},
          .body = {"This page has moved; nobody should read this."}};
}

std::string gzipped(const std::string& text) {
  constexpr int kGzip = 16;
  z_stream stream{};
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzip, 8,
               Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
  std::string input = text;
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

class RawServer::Implementation {
 public:
  explicit Implementation(std::function<void(Connection&)> handler)
      : handler_(std::move(handler)), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof name;
    auto* const generic = reinterpret_cast<sockaddr*>(&name);
    if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 16) != 0 ||
        ::getsockname(listener_, generic, &size) != 0) {
      throw std::runtime_error("no port on loopback is free");
    }
    port_ = ::ntohs(name.sin_port);
    thread_ = std::thread([this] { run(); });
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  ~Implementation() {
    {
      const std::lock_guard lock(mutex_);
      isEnding_ = true;
      ::shutdown(listener_, SHUT_RDWR);
      ::shutdown(connection_, SHUT_RDWR);
    }
    thread_.join();
    ::close(listener_);
  }

  int port() const { return port_; }

 private:
  void run() {
    while (true) {
      const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (descriptor < 0) {
        return;
      }
      if (use(descriptor)) {
        Connection connection(descriptor);
        handler_(connection);
      }
      use(-1);
      ::close(descriptor);
    }
  }

  bool use(int descriptor) {
    const std::lock_guard lock(mutex_);
    connection_ = descriptor;
    return !isEnding_;
  }

  std::function<void(Connection&)> handler_;
  int listener_;
  int port_ = 0;
  std::mutex mutex_;
  int connection_ = -1;
  bool isEnding_ = false;
  std::thread thread_;
};

bool RawServer::Connection::readRequest() {
  std::string text;
  char byte = 0;
  while (!text.ends_with("\r\n\r\n") && ::recv(descriptor_, &byte, 1, 0) == 1) {
    text += byte;
  }
  return text.ends_with("\r\n\r\n");
}

bool RawServer::Connection::send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count =
        ::send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

void RawServer::Connection::waitForClose() {
  char bytes[4096];
  while (::recv(descriptor_, bytes, sizeof bytes, 0) > 0) {
  }
}

RawServer::RawServer(std::function<void(Connection&)> handler)
    : implementation_(std::make_unique<Implementation>(std::move(handler))) {}
RawServer::~RawServer() = default;
int RawServer::port() const { return implementation_->port(); }
std::string RawServer::url(const std::string& path) const { return address("http", port(), path); }

}  // namespace qorix
