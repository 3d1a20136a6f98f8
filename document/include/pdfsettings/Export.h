// What the library gives to programs.
#pragma once

#define PDFSETTINGS_API __attribute__((visibility("default")))
