#pragma once

/// HDNT_API marks what the shared library exports; everything else is compiled with hidden visibility. HDNT_LOCAL marks
/// the members of an exported class that stay inside: its private ones, but for virtual ones, which the tables of
/// derived classes name, and those that an inline function of a header calls. These say HDNT_API for themselves.
#if defined(__GNUC__)
#define HDNT_API __attribute__((visibility("default")))
#define HDNT_LOCAL __attribute__((visibility("hidden")))
#else
#define HDNT_API
#define HDNT_LOCAL
#endif
