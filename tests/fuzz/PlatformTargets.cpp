#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <variant>

#include "fakes/RecordingLog.h"
#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/CloudKitProtocol.h"
#include "platform/linux/ContentDecoder.h"
#include "platform/linux/DesktopEntryRegistry.h"
#include "platform/linux/LinuxApplicationsFolder.h"
#include "platform/linux/PreferredLanguages.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "text/AsciiCase.h"

namespace qorix::fuzz {

namespace {

namespace fs = std::filesystem;

/// A folder in memory, for this process alone; it goes at the end.
const fs::path& scratchFolder() {
  struct Folder {
    Folder() {
      ::setenv("TMPDIR", "/dev/shm", 0);
      std::string name = (fs::temp_directory_path() / "qorix-fuzz-XXXXXX").string();
      expect(::mkdtemp(name.data()) != nullptr, "there is room for files");
      path = name;
    }
    ~Folder() {
      std::error_code ignored;
      fs::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    fs::path path;
  };
  static const Folder folder;
  return folder.path;
}

void write(const fs::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

struct Decoded {
  ContentDecoder::Result result;
  std::string bytes;
  bool isComplete;
  bool operator==(const Decoded&) const = default;
};

/// Decodes `body` in pieces of that size.
std::optional<Decoded> decode(const char* encodings, std::string_view body, std::size_t piece) {
  constexpr std::size_t kMostBytes = 1 << 20;
  const auto decoder = ContentDecoder::create(encodings, kMostBytes);
  if (decoder == nullptr) {
    return std::nullopt;
  }
  Decoded decoded{ContentDecoder::Result::ok, {}, false};
  while (!body.empty() && decoded.result == ContentDecoder::Result::ok) {
    decoded.result = decoder->decode(body.substr(0, piece), [&](std::string_view bytes) {
      decoded.bytes += bytes;
      return true;
    });
    body.remove_prefix(std::min(piece, body.size()));
  }
  decoded.isComplete = decoded.result == ContentDecoder::Result::ok && decoder->isComplete();
  expect(*encodings == '\0' || decoded.bytes.size() <= kMostBytes, "the limit is kept");
  return decoded;
}

}  // namespace

void cloudAnswers(std::string_view bytes) {
  static const int kStatuses[] = {200, 200, 200, 400, 401, 429, 500, 503};
  const unsigned choice = takeByte(bytes);
  const auto answer = cloudkit::readAnswer(kStatuses[choice % 8], bytes);
  if (const auto* error = std::get_if<Error>(&answer)) {
    expect(error->domain == "CloudKit" && !error->description.empty(), "an error is readable");
    return;
  }
  const Url service =
      choice < 128 ? *Url::parse("https://api.example.com") : *Url::parse("http://127.0.0.1:8000");
  for (const auto& record : std::get<cloudkit::Page>(answer).records) {
    for (const auto& [name, asset] : record.assets) {
      const auto address = cloudkit::assetAddress(asset.downloadUrl.value_or(""), service);
      if (const auto* url = std::get_if<Url>(&address)) {
        expect(cloudkit::isHttpOrHttps(*url) &&
                   (choice >= 128 || equalIgnoringCase(url->scheme(), "https")),
               "an asset is no less safe than its service");
      }
    }
  }
}

void contentDecoding(std::string_view bytes) {
  static const char* const kEncodings[] = {"gzip",       "deflate",        "",
                                           "gzip, gzip", "deflate, gzip",  "gzip, deflate",
                                           "br",         "identity,x-gzip"};
  const char* encodings = kEncodings[takeByte(bytes) % 8];
  const std::size_t piece = takeByte(bytes) % 16U + 1U;
  const auto whole = decode(encodings, bytes, bytes.size() + 1);
  const auto inPieces = decode(encodings, bytes, piece);
  expect(whole.has_value() == inPieces.has_value(), "the encodings alone decide what is known");
  if (whole && whole->result == ContentDecoder::Result::ok) {
    expect(whole == inPieces, "it does not matter how a body arrives");
  }
}

void settingsFile(std::string_view bytes) {
  const fs::path folder = scratchFolder() / "settings";
  fs::create_directories(folder);
  const fs::path file = folder / "host.sqlite";
  write(file, bytes);
  const auto log = std::make_shared<RecordingLog>();
  bool isSaved = false;
  {
    SqliteUserDefaults settings(file, log);
    settings.stringForKey("text");
    settings.stringArrayForKey("list");
    settings.integerForKey("number");
    settings.setInteger(7, "number");
    settings.setString("a\"b", "text");
    expect(settings.integerForKey("number") == 7, "what is set is read");
    isSaved = settings.synchronize();
  }
  expect(isSaved || !log->lines().empty(), "what cannot be saved is logged");
  if (isSaved) {
    SqliteUserDefaults settings(file, log);
    expect(settings.integerForKey("number") == 7 && settings.stringForKey("text") == "a\"b",
           "what is saved is there");
  }
  fs::remove_all(folder);
}

void desktopEntries(std::string_view bytes) {
  const std::string identifier(takeUntil(bytes, '\n'));
  const fs::path folder = scratchFolder() / "data";
  const fs::path entries = folder / "applications";
  fs::create_directories(entries / "vendor");
  write(entries / "a.desktop", bytes);
  write(entries / "vendor" / "b.desktop", bytes);
  write(folder / "outside.desktop", "[Desktop Entry]\nType=Application\nName=x\nExec=x\n");
  ::setenv("XDG_DATA_HOME", folder.c_str(), 1);
  ::setenv("XDG_DATA_DIRS", folder.c_str(), 1);
  DesktopEntryRegistry registry;
  for (const std::string& each : {std::string("a"), std::string("vendor-b"), identifier}) {
    for (const Url& url : registry.applicationUrlsForBundleIdentifier(each)) {
      const fs::path found = url.filePath().value_or("");
      expect(
          found.lexically_normal() == found && found.string().starts_with(entries.string() + "/"),
          "an application's entry lies in the folder of entries");
    }
  }
  LinuxApplicationsFolder applications(entries);
  for (const std::string& directory : applications.directories()) {
    const auto items = applications.items(directory);
    expect(items && !items->empty(), "the folder can be listed");
  }
}

void localeNames(std::string_view bytes) {
  const std::string language(takeUntil(bytes, '\0'));
  const std::string all(takeUntil(bytes, '\0'));
  const std::string messages(takeUntil(bytes, '\0'));
  const auto languages = preferredLanguages({language, all, messages, std::string(bytes)});
  expect(!languages || !languages->empty(), "a list of languages is not empty");
  for (const std::string& tag : languages.value_or(std::vector<std::string>())) {
    expect(tag.find_first_not_of(
               "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-") == tag.npos,
           "a tag has letters, digits and dashes");
    expect(tag.size() >= 2 && tag.size() <= 14, "a tag is language, script and region");
  }
}

}  // namespace qorix::fuzz
