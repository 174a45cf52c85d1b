#include "tools/sign/Options.h"

#include <qorix/QORIXInfo.h>

#include "tools/common/CommandLine.h"

namespace qorix::tools::sign {

std::optional<std::string> usageFault(const Options& options) {
  const bool isSign = options.command == "sign";
  const bool isVerify = options.command == "verify";
  if (isSign == options.keyFile.empty()) {
    return isSign ? "--key is missing" : "--key is for sign alone";
  }
  if (isVerify == options.publicKeys.empty()) {
    return isVerify ? "--public-key is missing" : "--public-key is for verify alone";
  }
  return isSign || options.output.empty()
             ? std::nullopt
             : std::optional<std::string>("--output is for sign alone");
}

Options parseOptions(int argc, char** argv) {
  Options options;
  CommandLine line("qorix-sign",
                   "Signs ad configuration documents, so that hosts that ask for it take no others."
                   "\n  keygen FILE    makes a private key and prints its public key\n"
                   "  public FILE    prints the public key of a private key\n"
                   "  sign FILE      signs a document; a signature that it has is replaced\n"
                   "  verify FILE    tells whether a document is signed");
  line.add_option("COMMAND", options.command, "keygen, public, sign or verify")
      ->required()
      ->type_name("")
      ->check(CLI::IsMember({"keygen", "public", "sign", "verify"}).description(""));
  line.add_option("FILE", options.file, "The private key or the document")
      ->required()
      ->type_name("");
  line.addText("--key", options.keyFile, "FILE", "sign: the private key");
  line.addText("--output", options.output, "FILE", "sign: where to write (FILE itself)");
  line.add_option("--public-key", options.publicKeys,
                  "verify: whose signature counts; once for each key")
      ->type_name("KEY")
      ->option_text("KEY")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  line.set_version_flag(
      "--version", "qorix-sign (QORIX) " QORIX_SIGN_VERSION "\n" + QORIXInfo::frameworkInfoString(),
      "Print the version");
  line.footer(
      "Exit status: 0 done, 1 the document is not signed by one of the keys, 2 wrong usage, or a\n"
      "file cannot be read or written.");
  line.parseOrExit(argc, argv);
  return options;
}

}  // namespace qorix::tools::sign
