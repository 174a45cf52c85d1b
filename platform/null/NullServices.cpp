#include "platform/null/NullServices.h"

#include <cstdio>

#include <qorix/platform/MemoryUserDefaults.h>

namespace qorix {

namespace {

class PlainLog : public Log {
 public:
  void write(std::string_view message) override {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  }
};

class NullRunLoop : public RunLoop {
 public:
  void performAfterDelay(double /*seconds*/, std::function<void()> /*task*/) override {}
  void dispatchAsync(std::function<void()> /*task*/) override {}
  void performAndWait(std::function<void()> task) override { task(); }
  void serveHost() override {}
};

class NullUrlSession : public UrlSession {
 public:
  void startDataTask(const Url& /*url*/) override {}
};

class NullUrlSessionFactory : public UrlSessionFactory {
 public:
  std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> /*delegate*/) override {
    return std::make_shared<NullUrlSession>();
  }
};

class NullApplicationsFolder : public ApplicationsFolder {
 public:
  std::vector<std::string> directories() override { return {}; }
  std::optional<std::vector<Item>> items(const std::string& /*directory*/) override {
    return std::nullopt;
  }
};

class NullApplicationRegistry : public ApplicationRegistry {
 public:
  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& /*identifier*/) override {
    return {};
  }
};

class NullWorkspace : public Workspace {
 public:
  void openUrl(const Url& /*url*/) override {}
};

class NullWindowFactory : public WindowFactory {
 public:
  std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& /*contentView*/) override {
    return nullptr;
  }
  std::shared_ptr<Window> createBorderlessWindow(const Rect& /*contentRect*/) override {
    return nullptr;
  }
};

class NullInterfaceLoader : public InterfaceLoader {
 public:
  std::optional<Interface> load(const std::string& /*name*/, const Bundle& /*bundle*/,
                                std::weak_ptr<WebViewDelegate> /*delegate*/) override {
    return std::nullopt;
  }
};

class NullCloudContainerFactory : public CloudContainerFactory {
 public:
  std::shared_ptr<CloudContainer> containerWithIdentifier(
      const std::string& /*identifier*/) override {
    return nullptr;
  }
};

}  // namespace

Platform nullServices() {
  const auto nowhere = std::make_shared<const Bundle>(std::nullopt, Url::fileUrl("/"));
  Platform null;
  null.log = std::make_shared<PlainLog>();
  null.standardUserDefaults = std::make_shared<MemoryUserDefaults>();
  null.mainRunLoop = std::make_shared<NullRunLoop>();
  null.mainBundle = nowhere;
  null.libraryBundle = nowhere;
  null.urlSessions = std::make_shared<NullUrlSessionFactory>();
  null.applicationsFolder = std::make_shared<NullApplicationsFolder>();
  null.applicationRegistry = std::make_shared<NullApplicationRegistry>();
  null.workspace = std::make_shared<NullWorkspace>();
  null.windows = std::make_shared<NullWindowFactory>();
  null.interfaceLoader = std::make_shared<NullInterfaceLoader>();
  null.cloudContainers = std::make_shared<NullCloudContainerFactory>();
  return null;
}

}  // namespace qorix
