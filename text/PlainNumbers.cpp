#include "text/PlainNumbers.h"

namespace qorix {

namespace {

// One for the process, never freed.
locale_t plainLocale() {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  return plain;
}

}  // namespace

PlainNumbers::PlainNumbers() : former_(uselocale(plainLocale())) {}

PlainNumbers::~PlainNumbers() { uselocale(former_); }

}  // namespace qorix
