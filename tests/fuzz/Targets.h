#pragma once

#include <string_view>

/// What reads bytes that strangers write. Each function takes any bytes, and ends the process if
/// the code under test breaks a promise beside what the sanitizers find.
namespace qorix::fuzz {

void document(std::string_view bytes);         // host and languages, then the text of a document
void customisation(std::string_view bytes);    // the JSON text of an advertisement's customisation
void links(std::string_view bytes);            // an address, the class of the clicked element
void lists(std::string_view bytes);            // a list, a number, a line for the log
void versions(std::string_view bytes);         // two versions with a NUL between them
void cloudAnswers(std::string_view bytes);     // status, then the body of an answer
void contentDecoding(std::string_view bytes);  // encodings, how the body is split, then the body
void settingsFile(std::string_view bytes);     // an SQLite file
void desktopEntries(std::string_view bytes);   // an identifier, a line break, then an entry
void localeNames(std::string_view bytes);      // four variables with NULs between them
void checker(std::string_view bytes);          // format and host, then a document

struct Target {
  const char* name;
  void (*run)(std::string_view bytes);
};

inline constexpr Target kTargets[] = {
    {"document", document},
    {"customisation", customisation},
    {"links", links},
    {"lists", lists},
    {"versions", versions},
    {"cloudAnswers", cloudAnswers},
    {"contentDecoding", contentDecoding},
    {"settingsFile", settingsFile},
    {"desktopEntries", desktopEntries},
    {"localeNames", localeNames},
    {"checker", checker},
};

}  // namespace qorix::fuzz
