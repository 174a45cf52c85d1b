#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/Url.h>

#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/StandardErrorLog.h"
#include "presentation/ShowDecision.h"
#include "presentation/VersionRule.h"
#include "text/AsciiCase.h"
#include "text/Excerpt.h"
#include "text/LeadingInteger.h"
#include "text/TextLists.h"
#include "webview/LinkMarks.h"
#include "webview/OpeningLimit.h"
#include "webview/PageContract.h"

namespace qorix::fuzz {

namespace {

class HeldState : public ShownState {
 public:
  std::optional<std::string> version() override { return version_; }
  std::int64_t count() override { return count_; }
  void restart(const std::string& version, std::int64_t count) override {
    version_ = version;
    count_ = count;
  }
  void setCount(std::int64_t count) override { count_ = count; }

 private:
  std::optional<std::string> version_;
  std::int64_t count_ = 0;
};

/// How often a version is shown, of more attempts than its count.
std::int64_t showingsOf(std::string_view version, std::int64_t count, ShownState& state) {
  const ShowTerms terms{true, std::string(version), count};
  std::int64_t showings = 0;
  for (std::int64_t i = 0; i < count + 3; ++i) {
    showings += isDue(decideShow(terms, state)) ? 1 : 0;
  }
  return showings;
}

}  // namespace

void links(std::string_view bytes) {
  const std::string address(takeUntil(bytes, '\0'));
  const DomHtmlElement element(std::nullopt, std::string(bytes));
  const auto parsed = Url::parse(address);
  expect(!parsed || parsed->absoluteString() == address, "an address stays as it is spelled");
  for (const Url& url : {parsed.value_or(Url::fileUrl("/")), Url::fromWebEngine(address)}) {
    const auto query = url.query();
    const std::string lowerQuery = asciiLower(query.value_or(""));
    for (const LinkMark& mark : {kAppStoreMark, kBrowserMark, kPurchaseMark}) {
      expect(
          queryHoldsMark(url, mark.inQuery) == (lowerQuery.find(mark.inQuery) != std::string::npos),
          "marks are in the query");
      expect(classHoldsMark(element, mark.inClass) ==
                 (element.className()->find(mark.inClass) != std::string::npos),
             "marks are in the class as it is spelled");
    }
    const auto store = appStoreUrl(url);
    expect(!store || Url::parse(store->absoluteString()).has_value(),
           "the address for the App Store is an address");
    expect(mayBeOpened(url.scheme()) == mayBeOpened(asciiLower(url.scheme())),
           "letter case does not open a scheme");
    expect(address.find(url.host()) != std::string::npos || url.absoluteString() != address,
           "the host is in the address");
    url.filePath();
  }
  const std::string path = "/" + address;
  const Url file = Url::fileUrl(path);
  expect(Url::parse(file.absoluteString()) == file && file.filePath() == path,
         "a path becomes a file's address and again a path");
}

void lists(std::string_view bytes) {
  const auto items = splitAtCommas(bytes);
  std::string joined;
  for (const std::string& item : items) {
    expect(!item.empty() && item.find(',') == item.npos, "an item is no list");
    expect(item.find_first_not_of(" \t") == 0 && item.find_last_not_of(" \t") == item.size() - 1,
           "an item has no blanks around it");
    joined += item + " ,\t";
  }
  expect(splitAtCommas(joined) == items, "the list of the items has the same items");
  expect(static_cast<std::int32_t>(
             std::clamp<std::int64_t>(leadingInteger<std::int64_t>(bytes), INT32_MIN, INT32_MAX)) ==
             leadingInteger<std::int32_t>(bytes),
         "a number too large is the nearest one");
  const std::string text(bytes.substr(0, bytes.find('\0')));  // the C library reads no further
  expect(leadingInteger<std::int64_t>(text) == std::strtoll(text.c_str(), nullptr, 10),
         "a number is what the C library takes for one");
  const std::string line = escapedForLog(bytes);
  expect(utf8::is_valid(line) && escapedForLog(line) == line,
         "a log line has no hidden characters");
  const auto beginning = beginningOfLongText(bytes);
  expect(!beginning || (utf8::is_valid(*beginning) && beginning->size() <= 300),
         "the beginning of a long text is a short one");
}

void versions(std::string_view bytes) {
  const std::string_view first = takeUntil(bytes, '\0');
  expect(isSameAdVersion(first, first), "a version is itself");
  expect(isSameAdVersion(first, bytes) == isSameAdVersion(bytes, first),
         "sameness has no direction");
  if (first.empty() || bytes.empty()) {
    return;  // shown without being counted
  }
  HeldState state;
  const auto count = static_cast<std::int64_t>(bytes.size() % 8);
  expect(showingsOf(first, count, state) == std::max<std::int64_t>(count, 1),
         "the first version is shown as often as its count says, and once at least");
  expect(showingsOf(bytes, count, state) == (isSameAdVersion(first, bytes) ? 0 : count),
         "another version is shown as often as its count says");
}

}  // namespace qorix::fuzz
