#pragma once

// Platform: values and ports.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/Export.h>
#include <qorix/platform/Error.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>

namespace qorix {

/// A file attached to a record.
class QORIX_EXPORT CloudAsset : public Object {
 public:
  /// The local file that holds the asset's bytes, valid as long as the asset. Absent when it could
  /// not be fetched.
  virtual std::optional<Url> fileUrl() const = 0;
};

/// One record: values under field names. Immutable; usable on any thread.
class QORIX_EXPORT CloudRecord : public Object {
 public:
  /// The value of a field (a text, a number, a CloudAsset); null when there is none.
  virtual Value objectForKey(const std::string& key) const = 0;
};

/// Asks for the records of one type whose field equals a text. The assets of the last one are
/// fetched with it; those of the others have no file.
struct CloudQuery {
  std::string recordType;  ///< The type of the records that match.
  std::string fieldName;   ///< The field that is compared.
  std::string fieldValue;  ///< The text that the field must equal, letter by letter.
};

/// A set of records.
class QORIX_EXPORT CloudDatabase : public Object {
 public:
  /// Either all matching records, in the database's order, or the error.
  using Completion = std::function<void(std::optional<std::vector<std::shared_ptr<CloudRecord>>>,
                                        std::optional<Error>)>;

  /// Runs `query` in the default zone and returns at once. `completion` is called once, on a
  /// private thread, and is kept alive until then. Any thread.
  virtual void performQuery(const CloudQuery& query, Completion completion) = 0;
};

/// A maker's part of a cloud service. Main thread only.
class QORIX_EXPORT CloudContainer : public Object {
 public:
  /// The database that everybody may read; null when there is none.
  virtual std::shared_ptr<CloudDatabase> publicCloudDatabase() = 0;
};

/// Makes containers. Main thread only.
class QORIX_EXPORT CloudContainerFactory {
 public:
  virtual ~CloudContainerFactory() = default;

  /// The container of that name; null when this deployment cannot reach containers. Nothing is
  /// sent.
  virtual std::shared_ptr<CloudContainer> containerWithIdentifier(
      const std::string& identifier) = 0;
};

}  // namespace qorix
