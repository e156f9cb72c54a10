// What every entry point of the test producer begins with.
#pragma once

#include "TestProducer.h"

// A counted call of a function that may have been told to fail or to hang.
#define ENTRY(name)                                                                                          \
    if (const GC_ERROR code = TheSettings().Enter(#name))                                                    \
    return code
#define EXPORT extern "C" __attribute__((visibility("default"))) GC_ERROR
#define NEED(pointer, from)                                                                                  \
    auto* const pointer = from;                                                                              \
    if (pointer == nullptr)                                                                                  \
    return GC_ERR_INVALID_HANDLE

namespace TestProducer {

// Of the calling thread.
GC_ERROR& LastCode();
inline GC_ERROR Fail(GC_ERROR code) {
    return LastCode() = code;
}
std::unique_ptr<Stream> TakeStream(Camera& camera);

} // namespace TestProducer
