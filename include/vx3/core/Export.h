// Visibility of what a client of libvx3.so may call. Everything else in the library is hidden.
#pragma once

#define VX3_API __attribute__((visibility("default")))
