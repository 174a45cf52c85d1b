#include <gmock/gmock.h>

#include <string>
#include <vector>

#include <qorix/qorix-gtk.h>

#include "platform/gtk/glib/AdInfo.h"
#include "platform/gtk/glib/CriticalMessages.h"
#include "support/Documents.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CInterfaceRecordTest : public GtkTest {
 public:
  ~CInterfaceRecordTest() override { g_clear_pointer(&info_, qorix_ad_info_unref); }

 protected:
  /// The record for C, freed at the end.
  QorixAdInfo* info() {
    if (info_ == nullptr) {
      info_ = gtk::newAdInfo(record_);
    }
    return info_;
  }

  std::shared_ptr<MyPushAdInfo> record_ = makeRecord({.adId = 1,
                                                      .enable = true,
                                                      .version = "2a",
                                                      .embed = 3,
                                                      .width = 4,
                                                      .height = 5,
                                                      .offsetx = -6,
                                                      .offsety = 7,
                                                      .count = 8,
                                                      .delay = 9});

 private:
  QorixAdInfo* info_ = nullptr;
};

/// A text that the test owns.
std::string takeText(gchar* text) {
  std::string taken = text == nullptr ? "(null)" : text;
  g_free(text);
  return taken;
}

std::vector<std::string> takeTexts(gchar** texts) {
  std::vector<std::string> taken(texts, texts + g_strv_length(texts));
  g_strfreev(texts);
  return taken;
}

std::string printedVariant(GVariant* variant) {
  std::string printed = takeText(g_variant_print(variant, TRUE));
  g_variant_unref(variant);
  return printed;
}

}  // namespace

TEST_F(CInterfaceRecordTest, everyValueIsRead) {
  EXPECT_EQ(qorix_ad_info_get_ad_id(info()), 1);
  EXPECT_EQ(qorix_ad_info_get_enable(info()), TRUE);
  EXPECT_STREQ(qorix_ad_info_get_version(info()), "2a");
  EXPECT_EQ(qorix_ad_info_get_embed(info()), 3);
  EXPECT_EQ(qorix_ad_info_get_width(info()), 4);
  EXPECT_EQ(qorix_ad_info_get_height(info()), 5);
  EXPECT_EQ(qorix_ad_info_get_offset_x(info()), -6);
  EXPECT_EQ(qorix_ad_info_get_offset_y(info()), 7);
  EXPECT_EQ(qorix_ad_info_get_count(info()), 8);
  EXPECT_EQ(qorix_ad_info_get_delay(info()), 9);
  EXPECT_STREQ(qorix_ad_info_get_notes(info()), "notes");
  EXPECT_STREQ(qorix_ad_info_get_advance(info()), "{}");
}

TEST_F(CInterfaceRecordTest, theTextsOfEachLanguageAreRead) {
  record_->setTitleDict(LocalizedTexts{{"zz", "Titel"}, {"default", "Title"}});
  record_->setHtmlContentsDict(LocalizedTexts{{"yy", "<p>y"}, {"default", "<p>"}});
  EXPECT_THAT(takeTexts(qorix_ad_info_dup_title_languages(info())), ElementsAre("zz", "default"));
  EXPECT_STREQ(qorix_ad_info_get_title(info(), "zz"), "Titel");
  EXPECT_EQ(qorix_ad_info_get_title(info(), "yy"), nullptr);
  EXPECT_THAT(takeTexts(qorix_ad_info_dup_html_languages(info())), ElementsAre("yy", "default"));
  EXPECT_STREQ(qorix_ad_info_get_html(info(), "yy"), "<p>y");
  EXPECT_EQ(qorix_ad_info_get_html(info(), "zz"), nullptr);
  EXPECT_EQ(takeText(qorix_ad_info_dup_localized_title(info())), "Title");
  EXPECT_EQ(takeText(qorix_ad_info_dup_localized_html(info())), "<p>");
}

TEST_F(CInterfaceRecordTest, theCustomisationIsAVariant) {
  record_->setAdvanceDict(Dictionary{{"b", true},
                                     {"d", 0.5},
                                     {"l", Array{Value(1), Value("a")}},
                                     {"m", Dictionary{{"n", Value()}}},
                                     {"u", *Url::parse("https://example.com/")},
                                     {"x", -3}});
  EXPECT_EQ(printedVariant(qorix_ad_info_dup_advance_dict(info())),
            "{'b': <true>, 'd': <0.5>, 'l': <[<int64 1>, <'a'>]>, 'm': <{'n': <@mv nothing>}>, "
            "'u': <'https://example.com/'>, 'x': <int64 -3>}");
}

TEST_F(CInterfaceRecordTest, whatIsAbsentIsNull) {
  record_->setEnable(false);
  record_->setVersion(std::nullopt);
  record_->setNotes(std::nullopt);
  record_->setAdvance(std::nullopt);
  record_->setAdvanceDict(std::nullopt);
  record_->setTitleDict(std::nullopt);
  record_->setHtmlContentsDict(std::nullopt);
  EXPECT_EQ(qorix_ad_info_get_enable(info()), FALSE);
  EXPECT_EQ(qorix_ad_info_get_version(info()), nullptr);
  EXPECT_EQ(qorix_ad_info_get_notes(info()), nullptr);
  EXPECT_EQ(qorix_ad_info_get_advance(info()), nullptr);
  EXPECT_EQ(qorix_ad_info_dup_advance_dict(info()), nullptr);
  EXPECT_THAT(takeTexts(qorix_ad_info_dup_title_languages(info())), IsEmpty());
  EXPECT_EQ(qorix_ad_info_get_title(info(), "default"), nullptr);
  EXPECT_THAT(takeTexts(qorix_ad_info_dup_html_languages(info())), IsEmpty());
  EXPECT_EQ(qorix_ad_info_get_html(info(), "default"), nullptr);
  EXPECT_EQ(qorix_ad_info_dup_localized_title(info()), nullptr);
  EXPECT_EQ(qorix_ad_info_dup_localized_html(info()), nullptr);
}

TEST_F(CInterfaceRecordTest, textsForCAreUtf8) {
  record_->setTitleDict(LocalizedTexts{{"default", kNoUtf8}});
  EXPECT_EQ(takeText(qorix_ad_info_dup_localized_title(info())), "caf\xEF\xBF\xBD");
}

TEST_F(CInterfaceRecordTest, aRecordLivesAsLongAsItIsReferenced) {
  auto record = makeRecord();
  const std::weak_ptr<const MyPushAdInfo> watched = record;
  QorixAdInfo* first = gtk::newAdInfo(std::move(record));
  EXPECT_EQ(qorix_ad_info_ref(first), first);
  EXPECT_EQ(g_boxed_copy(QORIX_TYPE_AD_INFO, first), first);
  qorix_ad_info_unref(first);
  g_boxed_free(QORIX_TYPE_AD_INFO, first);
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(qorix_ad_info_get_ad_id(first), 12);
  qorix_ad_info_unref(first);
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(gtk::newAdInfo(nullptr), nullptr);
}

TEST_F(CInterfaceRecordTest, aDocumentIsReadForThisHost) {
  const std::string text = makeDocument(
      {.adid = "11", .table = tableLine("com.example.host", "12"), .laterAds = adText("12")});
  QorixAdInfo* read = qorix_ad_info_parse_document(text.c_str());
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(qorix_ad_info_get_ad_id(read), 12);
  qorix_ad_info_unref(read);
  EXPECT_EQ(qorix_ad_info_parse_document("<rootcfg>"), nullptr);
  EXPECT_EQ(log->lines().size(), 1U);
}

TEST_F(CInterfaceRecordTest, aWrongArgumentIsRefusedOnce) {
  const std::vector<std::function<void()>> calls{
      [] { EXPECT_EQ(qorix_ad_info_ref(nullptr), nullptr); },
      [] { qorix_ad_info_unref(nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_parse_document(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_parse_document(kNoUtf8), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_get_ad_id(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_enable(nullptr), FALSE); },
      [] { EXPECT_EQ(qorix_ad_info_get_version(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_get_embed(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_width(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_height(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_offset_x(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_offset_y(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_count(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_delay(nullptr), 0); },
      [] { EXPECT_EQ(qorix_ad_info_get_notes(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_get_advance(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_dup_advance_dict(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_dup_title_languages(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_get_title(nullptr, "en"), nullptr); },
      [&] { EXPECT_EQ(qorix_ad_info_get_title(info(), nullptr), nullptr); },
      [&] { EXPECT_EQ(qorix_ad_info_get_title(info(), kNoUtf8), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_dup_html_languages(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_get_html(nullptr, "en"), nullptr); },
      [&] { EXPECT_EQ(qorix_ad_info_get_html(info(), nullptr), nullptr); },
      [&] { EXPECT_EQ(qorix_ad_info_get_html(info(), kNoUtf8), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_dup_localized_title(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_ad_info_dup_localized_html(nullptr), nullptr); },
      [] { EXPECT_EQ(qorix_rect_copy(nullptr), nullptr); },
      [] { qorix_rect_free(nullptr); },
  };
  CriticalMessages criticals;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(criticals.during(calls[i]), 1) << "call " << i;
  }
}

TEST_F(CInterfaceRecordTest, aRectangleIsCopied) {
  QorixRect rect{1, 2, 3, 4};
  auto* copy = static_cast<QorixRect*>(g_boxed_copy(QORIX_TYPE_RECT, &rect));
  rect = {};
  EXPECT_EQ(copy->x, 1);
  EXPECT_EQ(copy->y, 2);
  EXPECT_EQ(copy->width, 3);
  EXPECT_EQ(copy->height, 4);
  g_boxed_free(QORIX_TYPE_RECT, copy);
}

}  // namespace qorix::test
