#include <utf8.h>

#include <algorithm>
#include <cstdint>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/Url.h>

#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/StandardErrorLog.h"
#include "presentation/VersionRule.h"
#include "text/Excerpt.h"
#include "text/LeadingInteger.h"
#include "text/TextLists.h"
#include "webview/LinkMarks.h"
#include "webview/OpeningLimit.h"
#include "webview/PageContract.h"

namespace qorix::fuzz {

void links(std::string_view bytes) {
  const std::string address(takeUntil(bytes, '\0'));
  const DomHtmlElement element(std::nullopt, std::string(bytes));
  const auto parsed = Url::parse(address);
  expect(!parsed || parsed->absoluteString() == address, "an address stays as it is spelled");
  for (const Url& url : {parsed.value_or(Url::fileUrl("/")), Url::fromWebEngine(address)}) {
    const auto query = url.query();
    for (const LinkMark& mark : {kAppStoreMark, kBrowserMark, kPurchaseMark}) {
      expect(query || !queryHoldsMark(url, mark.inQuery), "marks are in the query");
      classHoldsMark(element, mark.inClass);
    }
    const auto store = appStoreUrl(url);
    expect(!store || Url::parse(store->absoluteString()).has_value(),
           "the address for the App Store is an address");
    mayBeOpened(url.scheme());
    url.host();
    url.filePath();
  }
  if (address.starts_with('/')) {
    const Url file = Url::fileUrl(address);
    expect(Url::parse(file.absoluteString()) == file && file.filePath() == address,
           "a path becomes a file's address and again a path");
  }
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
}

}  // namespace qorix::fuzz
