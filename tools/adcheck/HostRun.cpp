#include "tools/adcheck/HostRun.h"

#include <utility>
#include <vector>

#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/MemoryUserDefaults.h>

#include "platform/linux/LinuxApplicationsFolder.h"
#include "presentation/StoredShownState.h"
#include "tools/adcheck/EmptyApplicationsFolder.h"

namespace qorix::adcheck {

namespace {

/// Hands on what is logged until it is silenced.
class SinkLog : public Log {
 public:
  explicit SinkLog(LogSink sink) : sink_(std::move(sink)) {}
  void write(std::string_view message) override {
    if (!isSilent_) {
      sink_(message);
    }
  }
  void silence() { isSilent_ = true; }

 private:
  LogSink sink_;
  bool isSilent_ = false;
};

std::shared_ptr<UserDefaults> settings(const Options& options) {
  auto defaults = std::make_shared<MemoryUserDefaults>();
  if (options.languages) {
    defaults->setStringArray(*options.languages, kAppleLanguagesKey);
  }
  if (options.storedVersion) {
    defaults->setString(*options.storedVersion, kShownVersionKey);
  }
  if (options.storedCount) {
    defaults->setInteger(*options.storedCount, kShownCountKey);
  }
  return defaults;
}

std::shared_ptr<ApplicationsFolder> applicationsFolder(const Options& options) {
  if (options.applications) {
    return std::make_shared<LinuxApplicationsFolder>(*options.applications);
  }
  return std::make_shared<EmptyApplicationsFolder>();
}

DecisionReason reasonOf(ShowReason reason, const MyPushAdInfo& info) {
  if (isDue(reason) && info.delay() < 0) {
    return DecisionReason::parked;
  }
  if (isDue(reason) && info.embed() < 0) {
    return DecisionReason::nothingToShow;
  }
  switch (reason) {
    case ShowReason::disabled:
      return DecisionReason::disabled;
    case ShowReason::dueUncounted:
      return DecisionReason::dueUncounted;
    case ShowReason::dueFirst:
      return DecisionReason::dueFirst;
    case ShowReason::dueNewVersion:
      return DecisionReason::dueNewVersion;
    case ShowReason::dueCounted:
      return DecisionReason::dueCounted;
    case ShowReason::usedUp:
      break;
  }
  return DecisionReason::usedUp;
}

}  // namespace

std::string_view nameOf(DecisionReason reason) {
  switch (reason) {
    case DecisionReason::disabled:
      return "disabled";
    case DecisionReason::usedUp:
      return "used-up";
    case DecisionReason::parked:
      return "parked";
    case DecisionReason::nothingToShow:
      return "nothing-to-show";
    case DecisionReason::dueFirst:
      return "due-first";
    case DecisionReason::dueNewVersion:
      return "due-new-version";
    case DecisionReason::dueCounted:
      return "due-counted";
    case DecisionReason::dueUncounted:
      break;
  }
  return "due-uncounted";
}

Decision decide(const MyPushAdInfo& info) {
  const ShowReason reason = decideAndCount(info);
  StoredShownState stored(*platform().standardUserDefaults);
  return {isDue(reason), reasonOf(reason, info), stored.version(), stored.count()};
}

HostRun runHost(const std::string& document, const std::optional<std::string>& app,
                const Options& options, LogSink sink) {
  const auto log = std::make_shared<SinkLog>(std::move(sink));
  Platform services = nullPlatform();
  services.log = log;
  services.standardUserDefaults = settings(options);
  services.applicationsFolder = applicationsFolder(options);
  services.mainBundle = std::make_shared<const Bundle>(app, Url::fileUrl("/"));
  installPlatform(services);

  HostRun run;
  run.record = MyPushAdUtil::parseXMLWithString(document);
  if (run.record == nullptr) {
    log->silence();
    return run;
  }
  const MyPushAdInfo& info = *run.record;
  run.decision = decide(info);
  if (run.decision.isDue) {
    info.doCheck();
  }
  if (!run.decision.isDue || info.delay() < 0) {
    log->silence();  // a host does not come to look the texts up
  }
  run.title = info.localizedTitle();
  run.page = info.localizedHtmlString();
  log->silence();  // whatever is asked of the library after this run is not the host's doing
  return run;
}

}  // namespace qorix::adcheck
