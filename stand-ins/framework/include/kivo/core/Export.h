#pragma once

/// Marks what the framework's libraries show to others.
#define KIVO_EXPORT __attribute__((visibility("default")))
