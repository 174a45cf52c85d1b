#include "tools/adcheck/Tool.h"

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <variant>

#include <qorix/QORIXInfo.h>

#include "tools/adcheck/AllHosts.h"
#include "tools/adcheck/HostRun.h"
#include "tools/adcheck/JsonReport.h"
#include "tools/adcheck/Options.h"
#include "tools/adcheck/Streams.h"
#include "tools/adcheck/TextReport.h"

namespace qorix::adcheck {

namespace {

int fail(const std::string& why) {
  std::fprintf(stderr, "qorix-adcheck: %s\n", why.c_str());
  return kTrouble;
}

int failWithError(const std::string& what) { return fail(what + ": " + std::strerror(errno)); }

int refuseUsage(const std::string& why) {
  fail(why);
  std::fputs("Try --help.\n", stderr);
  return kTrouble;
}

/// Writes the whole output; `status` unless that fails.
int print(std::string_view text, int status) {
  return writeOutput(text) ? status : failWithError("the output cannot be written");
}

void logToStandardError(std::string_view line) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

bool isReadableFolder(const std::string& name) {
  DIR* folder = ::opendir(name.c_str());
  if (folder == nullptr) {
    return false;
  }
  ::closedir(folder);
  return true;
}

int statusFor(bool isRefused) { return isRefused ? kRefused : kRecord; }

int checkOneHost(const Options& options, const std::string& document) {
  if (options.json) {
    const HostRun run = runHost(document, options.app, options, logToStandardError);
    return print(textOf(toJson(run)), statusFor(run.record == nullptr));
  }
  const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  const TextReport report = reportText(document, options, isTerminal);
  return print(report.text, statusFor(report.isRefused));
}

int checkAllHosts(const Options& options, const std::string& document) {
  const AllHostsReport report = options.json ? allHostsJson(document, options, logToStandardError)
                                             : allHostsText(document, options);
  return print(report.text, statusFor(report.isAnyRefused));
}

}  // namespace

int runTool(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is a failing write
  const auto parsed = parseOptions(argc, argv);
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    return refuseUsage(error->message);
  }
  const auto& options = std::get<Options>(parsed);
  if (options.help) {
    return print(usageText(), kRecord);
  }
  if (options.version) {
    return print("qorix-adcheck (QORIX) " QORIX_ADCHECK_VERSION "\n" +
                     QORIXInfo::frameworkInfoString() + "\n",
                 kRecord);
  }
  if (options.applications && !isReadableFolder(*options.applications)) {
    return failWithError("the applications folder " + *options.applications + " cannot be read");
  }
  const auto document = readFile(options.file);
  if (!document) {
    return failWithError((options.file == "-" ? "standard input" : options.file) +
                         " cannot be read");
  }
  return options.allHosts ? checkAllHosts(options, *document) : checkOneHost(options, *document);
}

}  // namespace qorix::adcheck
