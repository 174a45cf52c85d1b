// qorix-sample-server: serves the files of a folder on loopback, for the demo and for trying out ad
// configuration documents of one's own.

#include <httplib.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

#include "CloudRecords.h"
#include "tools/common/CommandLine.h"

namespace {

struct Options {
  int port = 0;
  bool untilInputEnds = false;
  std::optional<std::string> cloudContainer;
  std::string cloudEnvironment = "production";
  std::string cloudToken = "token";
  std::string folder;
};

Options parseOptions(int argc, char** argv) {
  Options options;
  qorix::tools::CommandLine line(
      "qorix-sample-server",
      "Serves FOLDER over HTTP on 127.0.0.1 until it is ended (Ctrl-C, SIGTERM).\n"
      "Prints {\"event\":\"listening\",\"port\":N} when it is ready.");
  line.add_option("FOLDER", options.folder, "What to serve")
      ->required()
      ->type_name("")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  line.addNumber("--port", options.port, 0, 65535, "N",
                 "Listen on that port; 0, the default, takes a free one");
  line.addSwitch("--until-input-ends", options.untilInputEnds,
                 "End also when standard input does, for a program that holds its other end");
  line.addText("--cloud-container", options.cloudContainer, "ID",
               "Be a cloud service, too, with that container:\n"
               "each file NAME.xml of FOLDER is a record whose filename is NAME");
  line.addText("--cloud-environment", options.cloudEnvironment, "NAME",
               "The container's environment (production)");
  line.addText("--cloud-token", options.cloudToken, "TOKEN", "The container's API token (token)");
  line.parseOrExit(argc, argv);
  return options;
}

// A descriptor that becomes readable when the process is asked to stop.
int stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signalfd(-1, &signals, SFD_CLOEXEC);
}

void waitForStop(int signals, bool untilInputEnds) {
  const int input = untilInputEnds ? STDIN_FILENO : -1;  // which poll passes over
  std::array<pollfd, 2> events = {{{signals, POLLIN, 0}, {input, POLLIN, 0}}};
  while (poll(events.data(), events.size(), -1) >= 0 || errno == EINTR) {
    if (events[0].revents != 0) {
      return;
    }
    std::array<char, 256> ignored;
    if (events[1].revents != 0 && read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0) {
      return;
    }
  }
}

// The records as they are on the disk now.
CloudRecords recordsOf(const Options& options, int port) {
  CloudRecords records(*options.cloudContainer, options.cloudEnvironment, options.cloudToken);
  for (const auto& entry : std::filesystem::directory_iterator(options.folder)) {
    if (entry.path().extension() == ".xml" && entry.is_regular_file()) {
      const std::string name = entry.path().stem().string();
      records.add(
          {.type = "macadfiles",
           .texts = {{"filename", name}},
           .assets = {{"filecontents",
                       {.downloadUrl = "http://127.0.0.1:" + std::to_string(port) + "/assets/" +
                                       httplib::detail::encode_query_param(name) + "/${f}?o=1",
                        .size = std::filesystem::file_size(entry.path())}}}});
    }
  }
  return records;
}

void serveRecords(httplib::Server& server, const Options& options, const int& port) {
  server.Post("/database/.*", [&](const httplib::Request& request, httplib::Response& response) {
    const auto answer = recordsOf(options, port)
                            .answer({.method = request.method,
                                     .target = request.target,
                                     .contentType = request.get_header_value("Content-Type"),
                                     .body = request.body});
    response.status = answer.status;
    response.set_content(answer.body, "application/json");
  });
  server.Get("/assets/([^/]+)/[^/]+", [&](const httplib::Request& request,
                                          httplib::Response& response) {
    std::ifstream file(options.folder + "/" + request.matches[1].str() + ".xml", std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    response.status = file ? 200 : 404;
    response.set_content(bytes.str(), "application/octet-stream");
  });
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parseOptions(argc, argv);
  const int signals = stopSignals();  // before any thread is made, so that all leave them alone

  httplib::Server server;
  server.set_mount_point("/", options.folder);
  int port = 0;
  if (options.cloudContainer) {
    serveRecords(server, options, port);
  }
  port = options.port == 0 ? server.bind_to_any_port("127.0.0.1")
                           : (server.bind_to_port("127.0.0.1", options.port) ? options.port : -1);
  if (port < 0) {
    std::fprintf(stderr, "qorix-sample-server: cannot listen on port %d: %s\n", options.port,
                 std::strerror(errno));
    return 1;
  }
  std::thread listening([&server] { server.listen_after_bind(); });
  std::printf("{\"event\":\"listening\",\"port\":%d}\n", port);
  std::fflush(stdout);

  waitForStop(signals, options.untilInputEnds);
  while (!server.is_running()) {  // a stop before the start would be lost
    std::this_thread::yield();
  }
  server.stop();
  listening.join();
}
