#include <utf8.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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
#include "platform/linux/SettingsFile.h"
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

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

struct Decoded {
  ContentDecoder::Result result;
  std::string bytes;
  bool isComplete;
  bool operator==(const Decoded&) const = default;
};

/// Decodes `body` in pieces of those sizes, less one, again and again; without sizes, at once.
std::optional<Decoded> decode(const char* encodings, std::size_t mostBytes, std::string_view body,
                              std::string_view sizes = "") {
  const auto decoder = ContentDecoder::create(encodings, mostBytes);
  if (decoder == nullptr) {
    return std::nullopt;
  }
  Decoded decoded{ContentDecoder::Result::ok, {}, false};
  for (std::size_t i = 0; !body.empty() && decoded.result == ContentDecoder::Result::ok; ++i) {
    const std::size_t piece =
        sizes.empty() ? body.size() : static_cast<unsigned char>(sizes[i % sizes.size()]) + 1U;
    decoded.result = decoder->decode(body.substr(0, piece), [&](std::string_view bytes) {
      decoded.bytes += bytes;
      return true;
    });
    body.remove_prefix(std::min(piece, body.size()));
  }
  decoded.isComplete = decoded.result == ContentDecoder::Result::ok && decoder->isComplete();
  expect(*encodings == '\0' || decoded.bytes.size() <= mostBytes, "the limit is kept");
  return decoded;
}

std::string packed(std::string_view body, int windowBits) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, body.size()), '\0');
  // zlib does not write to its input, but its interface lacks the const.
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(body.data()));
  stream.avail_in = static_cast<uInt>(body.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  expect(deflate(&stream, Z_FINISH) == Z_STREAM_END, "a body can be packed");
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

void expectRoundTrip(std::string_view body, std::string_view sizes) {
  constexpr int kGzip = MAX_WBITS + 16;
  const std::string gzip = packed(body, kGzip);
  const Decoded expected{ContentDecoder::Result::ok, std::string(body), true};
  expect(decode("gzip", body.size(), gzip, sizes) == expected, "what was packed is unpacked");
  expect(decode("gzip, deflate", body.size() + gzip.size(), packed(gzip, MAX_WBITS), sizes) ==
             expected,
         "what was packed twice is unpacked");
}

}  // namespace

void cloudAnswers(std::string_view bytes) {
  static const int kStatuses[] = {200, 200, 200, 400, 401, 429, 500, 503};
  const unsigned choice = takeByte(bytes);
  const auto answer = cloudkit::readAnswer(kStatuses[choice % 8], bytes);
  if (const auto* error = std::get_if<Error>(&answer)) {
    expect(error->domain == "CloudKit" && utf8::is_valid(error->description) &&
               !error->description.empty(),
           "an error is readable");
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
  const std::size_t mostBytes = std::size_t{1} << takeByte(bytes) % 22;
  const std::string_view sizes = takeBytes(bytes, takeByte(bytes) % 16);
  const auto whole = decode(encodings, mostBytes, bytes);
  const auto inPieces = decode(encodings, mostBytes, bytes, sizes);
  expect(whole.has_value() == inPieces.has_value(), "the encodings alone decide what is known");
  if (whole && whole->result == ContentDecoder::Result::ok) {
    expect(whole == inPieces, "it does not matter how a body arrives");
  }
  expect(!whole || (whole->result == ContentDecoder::Result::ok) ==
                       (inPieces->result == ContentDecoder::Result::ok),
         "it does not matter for a refusal how a body arrives");
  expectRoundTrip(bytes, sizes);
}

void settingsFile(std::string_view bytes) {
  const fs::path folder = scratchFolder() / "settings";
  fs::create_directories(folder);
  const fs::path file = folder / "host.sqlite";
  write(file, bytes);
  const fs::path copy = scratchFolder() / "settings" / "copy.sqlite";
  write(copy, bytes);
  const auto contents = SettingsFile::contentsAt(copy);
  expect(bytesOf(copy) == bytes, "what is read on a full disk stays as it is");
  const auto log = std::make_shared<RecordingLog>();
  std::vector<std::string> list;
  bool isSaved = false;
  {
    SqliteUserDefaults settings(file, log);
    settings.stringForKey("text");
    settings.integerForKey("number");
    settings.setInteger(7, "number");
    settings.setString("a\"b", "text");
    expect(settings.integerForKey("number") == 7, "what is set is read");
    isSaved = settings.synchronize();
    list = settings.stringArrayForKey("list").value_or(list);
  }
  const std::size_t lines = log->takeLines().size();
  if (contents && lines == 0) {
    const auto entry = contents->find("list");
    const auto* held =
        entry == contents->end() ? nullptr : std::get_if<std::vector<std::string>>(&entry->second);
    expect(held == nullptr ? list.empty() : *held == list, "both readings are the same");
  }
  expect(contents || lines > 0 || list.empty(), "a sound file can be read on a full disk");
  expect(lines <= 1 && (isSaved || lines == 1), "a file is set aside or left with one line");
  if (isSaved) {
    SqliteUserDefaults settings(file, log);
    expect(settings.integerForKey("number") == 7 && settings.stringForKey("text") == "a\"b",
           "what is saved is there");
    expect(settings.stringArrayForKey("list").value_or(std::vector<std::string>()) == list,
           "what was there and not set stays");
    expect(log->lines().empty(), "a file that was written to is sound");
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
