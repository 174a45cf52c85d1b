#include "platform/linux/HttpQueue.h"

#include <curl/curl.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/ContentDecoder.h"

namespace qorix {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

template <auto cleanUp>
struct CleanUp {
  template <class Handle>
  void operator()(Handle* handle) const {
    cleanUp(handle);
  }
};
using Easy = std::unique_ptr<CURL, CleanUp<&curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, CleanUp<&curl_multi_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, CleanUp<&curl_slist_free_all>>;

/// What a queue and its thread share.
class Channel {
 public:
  void add(HttpRequest request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
    wake();
  }

  std::vector<HttpRequest> takeRequests() {
    const std::lock_guard lock(mutex_);
    return std::exchange(requests_, {});
  }

  /// No function of a request is called from now on.
  void stop() {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    wake();
  }

  bool isStopped() const {
    const std::lock_guard lock(mutex_);
    return isStopped_;
  }

  /// The handle whose waiting ends when something happens here; null when there is none any more.
  void setMulti(CURLM* multi) {
    const std::lock_guard lock(mutex_);
    multi_ = multi;
  }

 private:
  void wake() {
    if (multi_ != nullptr) {
      curl_multi_wakeup(multi_);
    }
  }

  mutable std::mutex mutex_;
  std::vector<HttpRequest> requests_;
  bool isStopped_ = false;
  CURLM* multi_ = nullptr;
};

bool isHttps(const char* url) { return url != nullptr && ::strncasecmp(url, "https:", 6) == 0; }

/// One request under way.
class Transfer {
 public:
  /// Times are what the queue has waited for its connections altogether.
  Transfer(HttpRequest request, const HttpOptions& options, std::shared_ptr<Channel> channel,
           Clock::duration now)
      : request_(std::move(request)),
        channel_(std::move(channel)),
        easy_(curl_easy_init()),
        lastArrival_(now) {
    configure(options);
    configureMethod();
  }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  CURL* easy() const { return easy_.get(); }

  /// Notes whether anything has arrived since the last call; answers when that was last so.
  Clock::duration lastArrival(Clock::duration now) {
    long headerSize = 0;
    curl_off_t bodySize = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_HEADER_SIZE, &headerSize);
    curl_easy_getinfo(easy_.get(), CURLINFO_SIZE_DOWNLOAD_T, &bodySize);
    // They start again from nothing at each redirect, hence "another" rather than "more".
    if (headerSize != headerSize_ || bodySize != bodySize_) {
      headerSize_ = headerSize;
      bodySize_ = bodySize;
      lastArrival_ = now;
    }
    return lastArrival_;
  }

  /// Reports how it ended.
  void complete(CURLcode code) {
    if (code == CURLE_OK && decoder_ != nullptr && !decoder_->isComplete()) {
      code = fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body ends too early");
    }
    if (!channel_->isStopped()) {
      request_.complete(code == CURLE_OK ? std::nullopt : std::optional(errorOf(code)), status());
    }
  }

  void completeIdle() {
    complete(fail(CURLE_OPERATION_TIMEDOUT, "Nothing has arrived for too long"));
  }

 private:
  void configure(const HttpOptions& options) {
    CURL* easy = easy_.get();
    curl_easy_setopt(easy, CURLOPT_URL, request_.url.absoluteString().c_str());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, request_.followsRedirects ? 1L : 0L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 20L);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &Transfer::handleRequest);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::handleData);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    // The idle limit alone says how long to wait.
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, 1'000'000L);
    if (!options.certificateAuthorityFile.empty()) {
      curl_easy_setopt(easy, CURLOPT_CAINFO, options.certificateAuthorityFile.c_str());
    }
  }

  void configureMethod() {
    addHeader("Cache-Control: no-cache");
    // The body is decoded here, as libcurl takes a compressed body that is cut off for a whole one.
    addHeader(std::string("Accept-Encoding: ") + ContentDecoder::kAcceptedEncodings);
    for (const std::string& header : request_.headers) {
      addHeader(header);
    }
    CURL* easy = easy_.get();
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
    if (request_.body) {
      curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request_.body->data());
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                       static_cast<curl_off_t>(request_.body->size()));
    }
  }

  void addHeader(const std::string& header) {
    curl_slist* whole = curl_slist_append(headers_.get(), header.c_str());
    static_cast<void>(headers_.release());
    headers_.reset(whole);
  }

  /// Called before each request, those of redirects included.
  static int handleRequest(void* transfer, char* /*remoteAddress*/, char* /*localAddress*/,
                           int /*remotePort*/, int /*localPort*/) {
    CURL* easy = static_cast<Transfer*>(transfer)->easy();
    const char* url = nullptr;
    curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &url);
    if (isHttps(url)) {
      curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "https");
    }
    return CURL_PREREQFUNC_OK;
  }

  /// Called for the final response's body only, not for that of a redirect.
  static std::size_t handleData(char* bytes, std::size_t /*one*/, std::size_t size,
                                void* transfer) {
    return static_cast<Transfer*>(transfer)->receive({bytes, size}) ? size : CURL_WRITEFUNC_ERROR;
  }

  bool receive(std::string_view bytes) {
    if (decoder_ == nullptr) {
      decoder_ = ContentDecoder::create(contentEncoding());
    }
    bool isWanted = true;
    const auto deliver = [&](std::string_view decoded) {
      isWanted = !channel_->isStopped() && request_.receive(decoded, status());
      return isWanted;
    };
    if (decoder_ == nullptr) {
      fail(CURLE_BAD_CONTENT_ENCODING, "The body's content encoding is not known");
      return false;
    }
    if (decoder_->decode(bytes, deliver)) {
      return true;
    }
    if (isWanted) {
      fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body is damaged");
    } else {
      fail(CURLE_WRITE_ERROR, "The body was not wanted any more");
    }
    return false;
  }

  int status() const {
    long status = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
  }

  std::string contentEncoding() const {
    curl_header* header = nullptr;
    const CURLHcode code =
        curl_easy_header(easy_.get(), "Content-Encoding", 0, CURLH_HEADER, -1, &header);
    if (code != CURLHE_OK) {
      return {};
    }
    return header->amount == 1 ? header->value : "several";
  }

  /// Keeps our own reason, which libcurl's code for an ended transfer would hide.
  CURLcode fail(CURLcode code, const char* text) {
    failure_ = Error{"curl", code, text};
    return code;
  }

  Error errorOf(CURLcode code) const {
    if (failure_.has_value()) {
      return *failure_;
    }
    return {"curl", code, errorText_[0] == '\0' ? curl_easy_strerror(code) : errorText_.data()};
  }

  const HttpRequest request_;
  const std::shared_ptr<Channel> channel_;
  HeaderList headers_;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  Easy easy_;
  std::unique_ptr<ContentDecoder> decoder_;
  std::optional<Error> failure_;
  long headerSize_ = 0;
  curl_off_t bodySize_ = 0;
  Clock::duration lastArrival_;
};

/// What a queue's thread does.
class Engine {
 public:
  Engine(std::shared_ptr<Channel> channel, HttpOptions options)
      : channel_(std::move(channel)), options_(std::move(options)), multi_(curl_multi_init()) {}
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  void run() {
    channel_->setMulti(multi_.get());
    while (!channel_->isStopped()) {
      startTransfers();
      int running = 0;
      curl_multi_perform(multi_.get(), &running);
      endFinished();
      const int milliseconds = endIdle();
      const auto before = Clock::now();
      curl_multi_poll(multi_.get(), nullptr, 0, milliseconds, nullptr);
      waited_ += Clock::now() - before;
    }
    channel_->setMulti(nullptr);
    channel_->takeRequests();
    while (!transfers_.empty()) {
      take(transfers_.back().get());
    }
  }

 private:
  void startTransfers() {
    for (HttpRequest& request : channel_->takeRequests()) {
      transfers_.push_back(
          std::make_unique<Transfer>(std::move(request), options_, channel_, waited_));
      curl_multi_add_handle(multi_.get(), transfers_.back()->easy());
    }
  }

  void endFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
      const CURLcode code = message->data.result;
      Transfer* transfer = nullptr;
      curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
      take(transfer)->complete(code);
    }
  }

  /// Ends what has been idle for too long; answers how many milliseconds the rest may wait.
  int endIdle() {
    const Seconds limit(options_.idleLimitSeconds);
    Seconds wait = std::chrono::hours(1);
    std::vector<Transfer*> idle;
    for (const auto& transfer : transfers_) {
      const Seconds left = limit - (waited_ - transfer->lastArrival(waited_));
      if (left.count() <= 0) {
        idle.push_back(transfer.get());
      } else {
        wait = std::min(wait, left);
      }
    }
    for (Transfer* transfer : idle) {
      take(transfer)->completeIdle();
    }
    return static_cast<int>(std::ceil(wait.count() * 1000));
  }

  std::unique_ptr<Transfer> take(Transfer* transfer) {
    const auto place = std::ranges::find(transfers_, transfer, &std::unique_ptr<Transfer>::get);
    auto taken = std::move(*place);
    transfers_.erase(place);
    curl_multi_remove_handle(multi_.get(), taken->easy());
    return taken;
  }

  const std::shared_ptr<Channel> channel_;
  const HttpOptions options_;
  const Multi multi_;
  std::vector<std::unique_ptr<Transfer>> transfers_;
  /// A call that takes long makes no other transfer older: only this time counts.
  Clock::duration waited_{};
};

/// Every worker thread of the process.
class Workers {
 public:
  /// Never destroyed: queues may live until the process ends.
  static Workers& shared() {
    static Workers& workers = *new Workers;
    return workers;
  }

  /// False when the thread cannot be made, or the process is ending.
  bool start(std::shared_ptr<Channel> channel, const HttpOptions& options) {
    const std::lock_guard lock(mutex_);
    joinFinished();
    if (isEnding_) {
      return false;
    }
    auto worker = std::make_shared<Worker>();
    worker->channel = channel;
    try {
      worker->thread = std::thread([this, worker, channel = std::move(channel), options]() mutable {
        Engine(std::exchange(channel, nullptr), options).run();
        const std::lock_guard finishing(mutex_);
        worker->isFinished = true;
        finished_.notify_all();
      });
    } catch (const std::system_error& error) {
      logLine(std::string("No thread can be made to fetch with: ") + error.what());
      return false;
    }
    workers_.push_back(std::move(worker));
    return true;
  }

 private:
  struct Worker {
    std::shared_ptr<Channel> channel;
    std::thread thread;
    bool isFinished = false;
  };

  Workers() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // Later than the handlers of libcurl and of the library below it, so it runs before them.
    std::atexit([] { shared().end(); });
  }

  void joinFinished() {
    std::erase_if(workers_, [](const std::shared_ptr<Worker>& worker) {
      if (worker->isFinished) {
        worker->thread.join();
      }
      return worker->isFinished;
    });
  }

  void end() {
    constexpr auto kMost = std::chrono::seconds(2);  // a call may take long
    std::unique_lock lock(mutex_);
    isEnding_ = true;
    for (const auto& worker : workers_) {
      worker->channel->stop();
    }
    finished_.wait_for(lock, kMost, [this] {
      return std::ranges::all_of(workers_, [](const std::shared_ptr<Worker>& worker) {
        return worker->isFinished || worker->thread.get_id() == std::this_thread::get_id();
      });
    });
    joinFinished();
  }

  std::mutex mutex_;
  std::condition_variable finished_;
  std::vector<std::shared_ptr<Worker>> workers_;
  bool isEnding_ = false;
};

}  // namespace

class HttpQueue::Implementation {
 public:
  explicit Implementation(HttpOptions options) : options_(std::move(options)) {}
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;
  ~Implementation() { channel_->stop(); }

  void start(HttpRequest request) {
    channel_->add(std::move(request));
    const std::lock_guard lock(mutex_);
    if (!isStarted_) {
      isStarted_ = Workers::shared().start(channel_, options_);
    }
    if (!isStarted_) {
      channel_->takeRequests();
    }
  }

 private:
  const std::shared_ptr<Channel> channel_ = std::make_shared<Channel>();
  const HttpOptions options_;
  std::mutex mutex_;
  bool isStarted_ = false;
};

HttpQueue::HttpQueue(HttpOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {
  prepare();
}

HttpQueue::~HttpQueue() = default;

void HttpQueue::prepare() { Workers::shared(); }

void HttpQueue::start(HttpRequest request) { implementation_->start(std::move(request)); }

}  // namespace qorix
