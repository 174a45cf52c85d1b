#include "platform/linux/CurlUrlSession.h"

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

/// What a session and its thread share.
class Channel {
 public:
  explicit Channel(std::weak_ptr<UrlSessionDelegate> delegate) : delegate_(std::move(delegate)) {}

  /// The delegate to call now; null when it is gone or must not be called any more.
  std::shared_ptr<UrlSessionDelegate> delegate() const {
    return isStopped() ? nullptr : delegate_.lock();
  }

  void add(const Url& url) {
    const std::lock_guard lock(mutex_);
    urls_.push_back(url);
    wake();
  }

  std::vector<Url> takeUrls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(urls_, {});
  }

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

  const std::weak_ptr<UrlSessionDelegate> delegate_;
  mutable std::mutex mutex_;
  std::vector<Url> urls_;
  bool isStopped_ = false;
  CURLM* multi_ = nullptr;
};

bool isHttps(const char* url) { return url != nullptr && ::strncasecmp(url, "https:", 6) == 0; }

/// One task.
class Transfer {
 public:
  Transfer(const Url& url, const CurlUrlSessionFactory::Options& options,
           std::shared_ptr<Channel> channel)
      : channel_(std::move(channel)), easy_(curl_easy_init()) {
    configure(url, options);
  }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  CURL* easy() const { return easy_.get(); }

  /// Notes whether anything has arrived since the last call; answers when that was last so.
  Clock::time_point lastArrival(Clock::time_point now) {
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

  /// Tells the delegate how it ended.
  void complete(CURLcode code) {
    if (code == CURLE_OK && decoder_ != nullptr && !decoder_->isComplete()) {
      code = fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body ends too early");
    }
    if (const auto delegate = channel_->delegate()) {
      delegate->urlSessionDidCompleteWithError(code == CURLE_OK ? std::nullopt
                                                                : std::optional(errorOf(code)));
    }
  }

  void completeIdle() {
    complete(fail(CURLE_OPERATION_TIMEDOUT, "Nothing has arrived for too long"));
  }

 private:
  void configure(const Url& url, const CurlUrlSessionFactory::Options& options) {
    headers_.reset(curl_slist_append(nullptr, "Cache-Control: no-cache"));
    CURL* easy = easy_.get();
    curl_easy_setopt(easy, CURLOPT_URL, url.absoluteString().c_str());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
    // The body is decoded here, as libcurl takes a compressed body that is cut off for a whole one.
    const std::string encodings =
        std::string("Accept-Encoding: ") + ContentDecoder::kAcceptedEncodings;
    curl_slist_append(headers_.get(), encodings.c_str());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
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
    const auto deliver = [&](std::string_view decoded) {
      const auto delegate = channel_->delegate();
      if (delegate != nullptr) {
        delegate->urlSessionDidReceiveData(decoded);
      }
      return delegate != nullptr;
    };
    if (decoder_ == nullptr) {
      fail(CURLE_BAD_CONTENT_ENCODING, "The body's content encoding is not known");
      return false;
    }
    if (!decoder_->decode(bytes, deliver)) {
      fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body is damaged");
      return false;
    }
    return true;
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

  const std::shared_ptr<Channel> channel_;
  HeaderList headers_;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  Easy easy_;
  std::unique_ptr<ContentDecoder> decoder_;
  std::optional<Error> failure_;
  long headerSize_ = 0;
  curl_off_t bodySize_ = 0;
  Clock::time_point lastArrival_ = Clock::now();
};

/// What a session's thread does.
class Engine {
 public:
  Engine(std::shared_ptr<Channel> channel, CurlUrlSessionFactory::Options options)
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
      curl_multi_poll(multi_.get(), nullptr, 0, milliseconds, nullptr);
    }
    channel_->setMulti(nullptr);
    while (!transfers_.empty()) {
      take(transfers_.back().get());
    }
  }

 private:
  void startTransfers() {
    for (const Url& url : channel_->takeUrls()) {
      transfers_.push_back(std::make_unique<Transfer>(url, options_, channel_));
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
    const auto now = Clock::now();
    const Seconds limit(options_.idleLimitSeconds);
    Seconds wait = std::chrono::hours(1);
    std::vector<Transfer*> idle;
    for (const auto& transfer : transfers_) {
      const Seconds left = limit - (now - transfer->lastArrival(now));
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
  const CurlUrlSessionFactory::Options options_;
  const Multi multi_;
  std::vector<std::unique_ptr<Transfer>> transfers_;
};

/// Every worker thread of the process.
class Workers {
 public:
  /// Never destroyed: sessions may live until the process ends.
  static Workers& shared() {
    static Workers& workers = *new Workers;
    return workers;
  }

  /// False when the thread cannot be made, or the process is ending.
  bool start(std::shared_ptr<Channel> channel, const CurlUrlSessionFactory::Options& options) {
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
    constexpr auto kMost = std::chrono::seconds(2);  // a delegate's call may take long
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

class CurlUrlSession : public UrlSession {
 public:
  CurlUrlSession(std::weak_ptr<UrlSessionDelegate> delegate, CurlUrlSessionFactory::Options options)
      : channel_(std::make_shared<Channel>(std::move(delegate))), options_(std::move(options)) {}
  ~CurlUrlSession() override { channel_->stop(); }

  void startDataTask(const Url& url) override {
    channel_->add(url);
    const std::lock_guard lock(mutex_);
    if (!isStarted_) {
      isStarted_ = Workers::shared().start(channel_, options_);
    }
  }

 private:
  const std::shared_ptr<Channel> channel_;
  const CurlUrlSessionFactory::Options options_;
  std::mutex mutex_;
  bool isStarted_ = false;
};

}  // namespace

CurlUrlSessionFactory::CurlUrlSessionFactory() : CurlUrlSessionFactory(Options()) {}

CurlUrlSessionFactory::CurlUrlSessionFactory(Options options) : options_(std::move(options)) {
  Workers::shared();  // setting libcurl up takes a while: not when the first task is started
}

std::shared_ptr<UrlSession> CurlUrlSessionFactory::createEphemeralSession(
    std::weak_ptr<UrlSessionDelegate> delegate) {
  return std::make_shared<CurlUrlSession>(std::move(delegate), options_);
}

}  // namespace qorix
