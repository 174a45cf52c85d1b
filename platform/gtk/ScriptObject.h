#pragma once

#include <string>

using JSCValue = struct _JSCValue;

namespace qorix::gtk {

// Properties of an object that a page's script has sent, converted as JavaScript does: a missing
// one is the text "undefined", the number NaN, or false. Main thread only.

/// Empty if the property cannot be converted.
std::string textProperty(JSCValue* object, const char* name);
double numberProperty(JSCValue* object, const char* name);
bool flagProperty(JSCValue* object, const char* name);

}  // namespace qorix::gtk
