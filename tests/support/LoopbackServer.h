#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qorix {

/// An HTTP or HTTPS server on 127.0.0.1, on a free port. It answers as a test tells it to, also
/// wrongly. It runs from its construction to its destruction on its own threads; every
/// method may be called on any thread.
///
///   LoopbackServer server;
///   server.setAnswer("/ad.xml", {.body = {"<push_ad_list/>"}});
///   ... fetch server.url("/ad.xml") ...
///   EXPECT_EQ(server.requests().size(), 1u);
class LoopbackServer {
 public:
  enum class Security { plain, tls };

  struct Request {
    std::string method;
    std::string target;                          // path and query as sent
    std::map<std::string, std::string> headers;  // names in lower case; the last of a name wins
    std::string body;
    /// The value of the header `lowerCaseName`, or "".
    std::string header(const std::string& lowerCaseName) const;
  };

  enum class Ending {
    complete,
    cut,    // the header promises more than is sent, then the connection is closed
    stall,  // the same, but the connection stays open and silent until the server goes
  };

  struct Answer {
    int status = 200;
    std::multimap<std::string, std::string> headers = {};
    /// The pieces are written one by one, never compressed: set Content-Encoding yourself.
    std::vector<std::string> body = {};
    /// Sent with chunked transfer encoding, a chunk a piece, instead of with a length.
    bool isChunked = false;
    /// Every piece but the first waits for one call of `releasePiece`.
    bool waitsBetweenPieces = false;
    Ending ending = Ending::complete;
  };

  using Handler = std::function<Answer(const Request&)>;

  explicit LoopbackServer(Security security = Security::plain);
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  /// What requests for `path` (without a query) get from now on. Other paths get a 404 page.
  void setAnswer(const std::string& path, Answer answer);
  /// The same, decided at each request, on a thread of the server.
  void setHandler(const std::string& path, Handler handler);

  void releasePiece();

  int port() const;
  /// "http://127.0.0.1:<port><path>", or https when the server speaks TLS.
  std::string url(const std::string& path) const;
  /// The same address under another scheme: "https" at a plain server gives a TLS failure.
  std::string url(const std::string& path, const std::string& scheme) const;

  /// A PEM file with the server's self-signed certificate, for clients that are to trust it. Empty
  /// without TLS.
  std::string certificateFile() const;

  /// The requests so far, oldest first.
  std::vector<Request> requests() const;
  /// Waits until there have been `count` requests; false when that takes longer than `limit`.
  bool waitForRequests(std::size_t count,
                       std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

  static Answer redirect(const std::string& location, int status = 302);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

/// `text` as a gzip stream.
std::string gzipped(const std::string& text);

/// Listens on 127.0.0.1 and hands each connection to `handler`, for servers that do not even speak
/// HTTP. One connection at a time, on a thread of its own; the connection is closed afterwards, and
/// all of it ends with the object.
class RawServer {
 public:
  /// A connection as the handler sees it.
  class Connection {
   public:
    explicit Connection(int descriptor) : descriptor_(descriptor) {}
    /// Reads up to the empty line that ends a request's header; false when the peer closes first.
    bool readRequest();
    bool send(const std::string& bytes);
    /// Returns when the peer has closed the connection, or the server ends.
    void waitForClose();

   private:
    int descriptor_;
  };

  explicit RawServer(std::function<void(Connection&)> handler);
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;
  ~RawServer();

  int port() const;
  std::string url(const std::string& path) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qorix
