#include <algorithm>
#include <utility>

#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

namespace qorix {

namespace {

std::string withoutExtension(const std::string& name) { return name.substr(0, name.rfind('.')); }

}  // namespace

bool MyPushAdUtil::areAllPromoAppsAlreadyInstalled(
    const std::optional<std::set<std::string>>& names) {
  return names && !names->empty() && std::ranges::includes(fetchUserInstalledAppNamesSet(), *names);
}

std::set<std::string> MyPushAdUtil::fetchUserInstalledAppNamesSet() {
  const auto refuse = [](int line) {
    logCheck("+[MyPushAdUtil fetchUserInstalledAppNamesSet]", line, kFatalError);
    return std::set<std::string>();
  };
  ApplicationsFolder& folder = *platform().applicationsFolder;
  const auto directories = folder.directories();
  if (directories.empty()) {
    return refuse(244);
  }
  if (directories.empty()) {  // never so after the test above; kept deliberately
    return refuse(245);
  }
  const auto items = folder.items(directories.front());
  if (!items) {
    return refuse(257);
  }
  std::set<std::string> names;
  for (const auto& item : *items) {
    if (!item.isPackage.value_or(false) || !item.name) {
      continue;
    }
    auto name = withoutExtension(*item.name);
    if (!name.empty()) {
      names.insert(std::move(name));
    }
  }
  return names;
}

}  // namespace qorix
