// What leaves a library of the platform: everything else is hidden.
#pragma once

#define ORK_EXPORT __attribute__((visibility("default")))
