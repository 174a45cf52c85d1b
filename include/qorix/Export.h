#pragma once

/// Marks what the shared libraries export: everything else in them is hidden.
#define QORIX_EXPORT [[gnu::visibility("default")]]
