#include "Options.h"

#include "tools/common/CommandLine.h"

Options parseOptions(int argc, char** argv) {
  Options options;
  qorix::tools::CommandLine line(
      "qorix-sample-host",
      "Shows a small editor and, in its views, the advertisement that an ad configuration document "
      "names.\nPrints one JSON object per line for each thing that happens.");
  line.addText("--bundle-id", options.bundleId, "ID", "Who the host is (com.example.editor)");
  auto* url = line.addText("--url", options.url, "URL", "Where the document is");
  line.addText("--cloud-container", options.cloudContainer, "ID",
               "Take the document from this container instead")
      ->excludes(url);
  line.addText("--cloud-base", options.cloudBase, "URL", "Where the cloud service is");
  line.addText("--cloud-environment", options.cloudEnvironment, "NAME",
               "development or production");
  line.addText("--cloud-token", options.cloudToken, "TOKEN", "The container's API token");
  line.addNumber("--host-views", options.hostViews, 0, 100, "N",
                 "How many views to offer (1); with 0 the host passes none");
  line.addViewSize(options.viewWidth, options.viewHeight, 10'000, "Size of each view (800x500)");
  line.addText("--defaults", options.defaults, "FILE", "Settings file");
  line.addText("--applications", options.applications, "DIR",
               "Folder of the installed applications");
  line.addLanguages(options.languages, "The user's languages for this run, separated by commas");
  line.addNumber("--quit-after", options.quitAfter, 0.0, 1e6, "SECONDS", "Quit by itself");
  line.addText("--screenshot", options.screenshot, "FILE",
               "Save a picture of the screen, a PNG, just before quitting");
  line.parseOrExit(argc, argv);
  return options;
}
