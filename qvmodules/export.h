// Marks what the world outside the plug-in sees; everything else is hidden.
#pragma once

#define QV_EXPORT __attribute__((visibility("default")))
