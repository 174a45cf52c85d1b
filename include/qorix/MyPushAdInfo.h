#pragma once

// Machinery: public for those who extend it.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <qorix/Export.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Value.h>

namespace qorix {

/// Texts under language codes ("en", "zh-Hans", "default"), in the document's order; codes are
/// distinct.
using LocalizedTexts = std::vector<std::pair<std::string, std::string>>;

/// One advertisement, as the ad configuration document and its customisation for this host describe
/// it. Made and filled by `MyPushAdUtil::parseXMLWithString`, read-only and shared afterwards; a
/// record may then be read on any thread.
///
/// A new record has 0 for every number, `enable` false, empty `version`, `advance`, `notes` and
/// `advanceDict`, and no dictionaries of texts.
class QORIX_EXPORT MyPushAdInfo : public Object {
 public:
  /// A new record, allocated as a `Self`.
  template <class Self = MyPushAdInfo>
  static std::shared_ptr<Self> createInstance() {
    return std::make_shared<Self>();
  }

  /// The title for the user's preferred language; see `localizedValueInDict`.
  std::optional<std::string> localizedTitle() const;

  /// The HTML page for the user's preferred language; see `localizedValueInDict`.
  std::optional<std::string> localizedHtmlString() const;

  /// The text of the first entry whose code the user's first preferred language begins with ("zh"
  /// serves "zh-Hans-CN"; "en" when the user has no preference), else the one under "default". Logs
  /// when there is none or it is empty: an empty entry for the user's language is not replaced.
  /// Main thread (reads the settings).
  static std::optional<std::string> localizedValueInDict(const LocalizedTexts* texts);

  /// Logs one line for each member that makes no sense. Changes nothing.
  void doCheck() const;

  /// Reads `advance` as JSON, an object keyed by host bundle identifiers, and lets the entry of the
  /// running host override members of this record. Logs and changes nothing when it cannot be read.
  void doParseCustomizationAndMerge();

  /// @{
  /// Identifier of the advertisement; 1 or more in a sound document.
  std::int64_t adId() const { return adId_; }
  void setAdId(std::int64_t value) { adId_ = value; }
  /// @}

  /// @{
  /// Whether the advertisement may be shown at all.
  virtual bool enable() const { return enable_; }
  void setEnable(bool value) { enable_ = value; }
  /// @}

  /// @{
  /// Showings are counted for each version; empty or absent: not counted.
  const std::optional<std::string>& version() const { return version_; }
  void setVersion(std::optional<std::string> value) { version_ = std::move(value); }
  /// @}

  /// @{
  /// Placement: 0 the pop-up window; 1 to 8 a banner, clockwise from the host view's top right
  /// corner; above 8 a banner at its lower left corner; below 0 nothing is shown.
  std::int64_t embed() const { return embed_; }
  void setEmbed(std::int64_t value) { embed_ = value; }
  /// @}

  /// @{
  /// Size in points of the banner or of the pop-up's content. The pop-up keeps the size it has
  /// unless both are above 0.
  std::int64_t width() const { return width_; }
  void setWidth(std::int64_t value) { width_ = value; }
  std::int64_t height() const { return height_; }
  void setHeight(std::int64_t value) { height_ = value; }
  /// @}

  /// @{
  /// Distance in points of a banner from the edges that it is anchored to. Only a customisation
  /// sets them.
  std::int64_t offsetx() const { return offsetx_; }
  void setOffsetx(std::int64_t value) { offsetx_ = value; }
  std::int64_t offsety() const { return offsety_; }
  void setOffsety(std::int64_t value) { offsety_ = value; }
  /// @}

  /// @{
  /// How many times this version may be shown on one machine.
  std::int64_t count() const { return count_; }
  void setCount(std::int64_t value) { count_ = value; }
  /// @}

  /// @{
  /// Seconds between the decision to show and the showing; negative: never shown.
  std::int64_t delay() const { return delay_; }
  void setDelay(std::int64_t value) { delay_ = value; }
  /// @}

  /// @{
  /// The author's note.
  const std::optional<std::string>& notes() const { return notes_; }
  void setNotes(std::optional<std::string> value) { notes_ = std::move(value); }
  /// @}

  /// @{
  /// The customisation as JSON text.
  const std::optional<std::string>& advance() const { return advance_; }
  void setAdvance(std::optional<std::string> value) { advance_ = std::move(value); }
  /// @}

  /// @{
  /// The customisation's entry for the running host, once merged.
  const std::optional<Dictionary>& advanceDict() const { return advanceDict_; }
  void setAdvanceDict(std::optional<Dictionary> value) { advanceDict_ = std::move(value); }
  /// @}

  /// @{
  /// The title in each language.
  const std::optional<LocalizedTexts>& titleDict() const { return titleDict_; }
  void setTitleDict(std::optional<LocalizedTexts> value) { titleDict_ = std::move(value); }
  /// @}

  /// @{
  /// The HTML page in each language.
  const std::optional<LocalizedTexts>& htmlContentsDict() const { return htmlContentsDict_; }
  void setHtmlContentsDict(std::optional<LocalizedTexts> value) {
    htmlContentsDict_ = std::move(value);
  }
  /// @}

 private:
  void mergeCustomization(const Dictionary& entry);

  std::int64_t adId_ = 0;
  bool enable_ = false;
  std::optional<std::string> version_ = "";
  std::int64_t embed_ = 0;
  std::int64_t width_ = 0;
  std::int64_t height_ = 0;
  std::int64_t offsetx_ = 0;
  std::int64_t offsety_ = 0;
  std::int64_t count_ = 0;
  std::int64_t delay_ = 0;
  std::optional<std::string> notes_ = "";
  std::optional<std::string> advance_ = "";
  std::optional<Dictionary> advanceDict_ = Dictionary();
  std::optional<LocalizedTexts> titleDict_;
  std::optional<LocalizedTexts> htmlContentsDict_;
};

}  // namespace qorix
