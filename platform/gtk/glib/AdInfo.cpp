#include "platform/gtk/glib/AdInfo.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include <qorix/MyPushAdUtil.h>

#include "platform/gtk/glib/Results.h"
#include "platform/gtk/glib/Variants.h"

using qorix::LocalizedTexts;
using qorix::MyPushAdInfo;
using qorix::gtk::borrowedText;
using qorix::gtk::guardedResult;
using qorix::gtk::isUtf8;
using qorix::gtk::newText;

struct _QorixAdInfo {
  std::shared_ptr<const MyPushAdInfo> record;
  gatomicrefcount references = 0;
};

namespace {

gchar** newLanguages(const std::optional<LocalizedTexts>& texts) {
  gchar** languages = g_new0(gchar*, (texts ? texts->size() : 0) + 1);
  for (std::size_t i = 0; texts && i < texts->size(); ++i) {
    languages[i] = newText((*texts)[i].first);
  }
  return languages;
}

const gchar* textUnder(const std::optional<LocalizedTexts>& texts, std::string_view language) {
  if (texts) {
    for (const auto& [code, text] : *texts) {
      if (code == language) {
        return text.c_str();
      }
    }
  }
  return nullptr;
}

}  // namespace

namespace qorix::gtk {

QorixAdInfo* newAdInfo(std::shared_ptr<const MyPushAdInfo> record) {
  if (record == nullptr) {
    return nullptr;
  }
  auto made = std::make_unique<QorixAdInfo>(QorixAdInfo{.record = std::move(record)});
  g_atomic_ref_count_init(&made->references);
  return made.release();
}

}  // namespace qorix::gtk

G_DEFINE_BOXED_TYPE(QorixAdInfo, qorix_ad_info, qorix_ad_info_ref, qorix_ad_info_unref)

QorixAdInfo* qorix_ad_info_ref(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  g_atomic_ref_count_inc(&self->references);
  return self;
}

void qorix_ad_info_unref(QorixAdInfo* self) {
  g_return_if_fail(self != nullptr);
  if (g_atomic_ref_count_dec(&self->references) != FALSE) {
    delete self;
  }
}

QorixAdInfo* qorix_ad_info_parse_document(const gchar* document) {
  g_return_val_if_fail(isUtf8(document), nullptr);
  return guardedResult<QorixAdInfo*>(nullptr, [document] {
    return qorix::gtk::newAdInfo(qorix::MyPushAdUtil::parseXMLWithString(document));
  });
}

gint64 qorix_ad_info_get_ad_id(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->adId();
}

// The one value that a subclass may compute.
gboolean qorix_ad_info_get_enable(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, FALSE);
  return guardedResult<gboolean>(FALSE, [self] { return self->record->enable() ? TRUE : FALSE; });
}

const gchar* qorix_ad_info_get_version(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return borrowedText(self->record->version());
}

gint64 qorix_ad_info_get_embed(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->embed();
}

gint64 qorix_ad_info_get_width(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->width();
}

gint64 qorix_ad_info_get_height(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->height();
}

gint64 qorix_ad_info_get_offset_x(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->offsetx();
}

gint64 qorix_ad_info_get_offset_y(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->offsety();
}

gint64 qorix_ad_info_get_count(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->count();
}

gint64 qorix_ad_info_get_delay(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, 0);
  return self->record->delay();
}

const gchar* qorix_ad_info_get_notes(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return borrowedText(self->record->notes());
}

const gchar* qorix_ad_info_get_advance(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return borrowedText(self->record->advance());
}

GVariant* qorix_ad_info_dup_advance_dict(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return guardedResult<GVariant*>(nullptr, [self]() -> GVariant* {
    const auto& entry = self->record->advanceDict();
    return entry ? g_variant_ref_sink(qorix::gtk::newVariant(*entry)) : nullptr;
  });
}

gchar** qorix_ad_info_dup_title_languages(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return guardedResult<gchar**>(nullptr,
                                [self] { return newLanguages(self->record->titleDict()); });
}

const gchar* qorix_ad_info_get_title(QorixAdInfo* self, const gchar* language) {
  g_return_val_if_fail(self != nullptr, nullptr);
  g_return_val_if_fail(isUtf8(language), nullptr);
  return textUnder(self->record->titleDict(), language);
}

gchar** qorix_ad_info_dup_html_languages(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return guardedResult<gchar**>(nullptr,
                                [self] { return newLanguages(self->record->htmlContentsDict()); });
}

const gchar* qorix_ad_info_get_html(QorixAdInfo* self, const gchar* language) {
  g_return_val_if_fail(self != nullptr, nullptr);
  g_return_val_if_fail(isUtf8(language), nullptr);
  return textUnder(self->record->htmlContentsDict(), language);
}

gchar* qorix_ad_info_dup_localized_title(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return guardedResult<gchar*>(nullptr, [self] { return newText(self->record->localizedTitle()); });
}

gchar* qorix_ad_info_dup_localized_html(QorixAdInfo* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  return guardedResult<gchar*>(nullptr,
                               [self] { return newText(self->record->localizedHtmlString()); });
}
