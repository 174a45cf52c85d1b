#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/platform/View.h>

#include "support/TemporaryFolder.h"
#include "support/VirtualDisplay.h"

namespace qorix::bench {

inline constexpr int kAdWidth = 300;
inline constexpr int kAdHeight = 100;
inline constexpr std::uint32_t kPageColor = 0xFF0000;
inline constexpr const char* kPage =
    "<!DOCTYPE html><html><head><title>Offer</title></head><body "
    "style='margin:0;background:#f00'><a href='https://www.example.com/?zamopenout=1' "
    "style='display:block;height:100px'>Try our viewer</a></body></html>";

/// The kind of advertisement, as a document's `embed` gives it.
inline constexpr const char* kBanner = "1";
inline constexpr const char* kPopup = "0";

/// A screen, and a settings file in whose cache a document waits: for the runs of a benchmark.
class BenchDesktop {
 public:
  /// Ends the program with a message if there can be no screen.
  explicit BenchDesktop(const std::string& embed);

  std::string settings() const { return folder_ / "settings.sqlite"; }
  const std::string& document() const { return document_; }

 private:
  const TemporaryFolder folder_;
  const std::string document_;
  std::unique_ptr<test::VirtualDisplay> display_;
};

/// A host with a window that is on the screen.
class BenchHost {
 public:
  /// With so many places for an advertisement.
  explicit BenchHost(int places = 1);

  const std::vector<GtkOverlay*>& overlays() const { return overlays_; }
  GtkOverlay* overlay() const { return overlays_.front(); }

  /// Installs the library, as a host does at its start.
  void install(const std::string& settings);
  /// Asks for the advertisement of the cached document. What is at the address is fetched as well,
  /// at the first request; by default nothing is there.
  void requestAd(GtkOverlay* overlay, const std::string& address = "http://127.0.0.1:9/ad.xml");

 private:
  std::vector<GtkOverlay*> overlays_;
};

/// Serves the main loop until nothing is left to do now.
void serveLoop();

}  // namespace qorix::bench
