#include "tools/adcheck/Tool.h"

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "signing/DocumentSignature.h"
#include "signing/PublicKey.h"
#include "tools/adcheck/HostRun.h"
#include "tools/adcheck/Options.h"
#include "tools/adcheck/report/AllHosts.h"
#include "tools/adcheck/report/JsonReport.h"
#include "tools/adcheck/report/Problems.h"
#include "tools/adcheck/report/SarifReport.h"
#include "tools/adcheck/report/TextReport.h"
#include "tools/common/Streams.h"

namespace qorix::tools::adcheck {

namespace {

int fail(const std::string& why) {
  std::fprintf(stderr, "qorix-adcheck: %s\n", why.c_str());
  return kTrouble;
}

int failWithError(const std::string& what) { return fail(what + ": " + std::strerror(errno)); }

/// Writes the whole output. Returns `status` if that succeeds.
int print(std::string_view text, int status) {
  return writeOutput(text) ? status : failWithError("the output cannot be written");
}

void logToStandardError(std::string_view line) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

/// Tells on standard error whether the document is signed, if it is or should be. Returns whether
/// hosts with the keys take it.
bool isSignedAsAsked(const Options& options, const std::string& document) {
  const auto tell = [&options](const std::string& what) {
    fail(nameOfFile(options.file) + ": " + what);
  };
  if (options.publicKeys.empty()) {
    if (dividedDocument(document)) {
      tell("there is a signature, which --public-key checks");
    }
    return true;
  }
  const auto fault = signatureFault(document, options.publicKeys);
  tell(fault ? "hosts with these keys refuse the document: " + *fault
             : "the signature is by one of the keys");
  return !fault;
}

bool isReadableFolder(const std::string& name) {
  DIR* folder = ::opendir(name.c_str());
  if (folder == nullptr) {
    return false;
  }
  ::closedir(folder);
  return true;
}

Problems problemsIn(const SourceDocument& source, const Options& options) {
  return options.allHosts ? problemsForAllHosts(source) : problemsForHost(source, options.app);
}

int statusFor(bool isRefused, bool hasWarnings, const Options& options) {
  return isRefused ? kRefused : options.isStrict && hasWarnings ? kWarnings : kRecord;
}

/// For reports that do not look for warnings themselves. JSON has no place for those that change
/// the status: they go to standard error.
int statusFor(bool isRefused, const Options& options, const std::string& document) {
  if (isRefused || !options.isStrict) {
    return statusFor(isRefused, false, options);
  }
  const SourceDocument source(document);
  const auto warnings = problemsIn(source, options).warnings;
  if (options.format == Format::json) {
    for (const Finding& each : warnings) {
      logToStandardError(placeInFile(nameOfFile(options.file), source, each.offset) +
                         "warning: " + each.words);
    }
  }
  return statusFor(false, !warnings.empty(), options);
}

int printSarif(const Options& options, const std::string& document) {
  const SourceDocument source(document);
  const Problems problems = problemsIn(source, options);
  const int status = statusFor(!problems.refusals.empty(), !problems.warnings.empty(), options);
  return print(sarifText(problems, source, options, status), status);
}

int checkOneHost(const Options& options, const std::string& document) {
  if (options.format == Format::json) {
    const HostRun run = runHost(document, options.app, options, logToStandardError);
    return print(textOf(toJson(run)), statusFor(run.record == nullptr, options, document));
  }
  const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  const TextReport report = reportText(document, options, isTerminal);
  return print(report.text, statusFor(report.isRefused, report.hasWarnings, options));
}

int checkAllHosts(const Options& options, const std::string& document) {
  const AllHostsReport report = options.format == Format::json
                                    ? allHostsJson(document, options, logToStandardError)
                                    : allHostsText(document, options);
  return print(report.text, statusFor(report.isAnyRefused, options, document));
}

}  // namespace

int runTool(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is a failing write
  const Options options = parseOptions(argc, argv);
  if (options.applications && !isReadableFolder(*options.applications)) {
    return failWithError("the applications folder " + *options.applications + " cannot be read");
  }
  const auto document = options.file == "-" ? readAll(STDIN_FILENO) : readFile(options.file);
  if (!document) {
    return failWithError((options.file == "-" ? "standard input" : options.file) +
                         " cannot be read");
  }
  if (!arePublicKeys(options.publicKeys)) {
    return fail("a --public-key is no Ed25519 public key in base64");
  }
  if (!isSignedAsAsked(options, *document)) {
    return kRefused;
  }
  if (options.format == Format::sarif) {
    return printSarif(options, *document);
  }
  return options.allHosts ? checkAllHosts(options, *document) : checkOneHost(options, *document);
}

}  // namespace qorix::tools::adcheck
