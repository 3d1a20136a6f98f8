// What the library gives to programs.
#pragma once

#define PDFSETTINGS_API __attribute__((visibility("default")))

// What a class keeps to itself.
#define PDFSETTINGS_LOCAL __attribute__((visibility("hidden")))
