#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/MyPushAdInfo.h>

#include "examples/host/EditorWindow.h"
#include "tools/preview/DocumentFile.h"
#include "tools/preview/Handover.h"
#include "tools/preview/Options.h"
#include "tools/preview/PreviewOperator.h"
#include "tools/preview/Services.h"

/// The host view in its window, the advertisement that one document puts there, and the watch over
/// the document's file.
class Preview {
 public:
  /// Shows `text`; `past` is what an earlier run has left. `argv` is the command line, for a new
  /// run.
  Preview(Options options, std::string text, std::optional<Handover> past, char** argv);

  /// Runs the main loop until the window is closed or the time is over. Answers the exit status.
  int run();

 private:
  enum class Stage {
    nothing,  // to see: the document is refused, or its advertisement is not shown
    coming,   // scheduled
    loading,  // on screen, its page is not
    shown,
  };

  void createWindow();
  void takeSignals();
  void begin();
  std::shared_ptr<qorix::MyPushAdInfo> parse(const std::string& text);
  void show(const std::string& text);
  bool areAllPromotedInstalled(const std::string& text) const;
  void showAd(const std::shared_ptr<const qorix::MyPushAdInfo>& info);
  void documentChanged(const std::string& text);
  void startAnewWith(const std::string& text);
  void printRefusal(const std::string& text, const std::vector<std::string>& logLines,
                    const std::string& whatFollows) const;
  void printNotification(const qorix::Notification& notification);
  void pageDidLoad();

  void timeIsOver();
  void patienceIsOver();
  void closed();
  void takeDuePicture();
  void takePicture(const qorix::View& view);
  void failPicture(const std::string& why);
  void quit(int status);

  static gboolean onMap(GtkWidget* window, GdkEvent* event, gpointer self);
  static gboolean onDelete(GtkWidget* window, GdkEvent* event, gpointer self);

  Options options_;
  std::string text_;
  std::optional<Handover> past_;
  char** argv_;
  Services services_;
  EditorWindow editor_;
  std::shared_ptr<PreviewOperator> presenter_;
  std::unique_ptr<DocumentWatch> watch_;
  Stage stage_ = Stage::nothing;
  bool isRefused_ = false;  // the document that this run began with
  bool hasBegun_ = false;
  bool isTimeOver_ = false;
  std::int64_t quitAt_ = 0;  // as in Handover
  int status_ = 0;
};
