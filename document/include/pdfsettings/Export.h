// Symbol visibility.
#pragma once

#define PDFSETTINGS_API __attribute__((visibility("default")))

// For the parts of exported classes that only the library uses.
#define PDFSETTINGS_LOCAL __attribute__((visibility("hidden")))
