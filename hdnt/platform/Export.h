#pragma once

/// Marks what the shared library exports; everything else is compiled with hidden visibility.
#if defined(__GNUC__)
#define HDNT_API __attribute__((visibility("default")))
#else
#define HDNT_API
#endif
