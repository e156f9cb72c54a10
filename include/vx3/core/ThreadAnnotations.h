// Clang's thread-safety attributes; nothing on other compilers.
#pragma once

#if defined(__clang__)
#define VX3_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VX3_THREAD_ATTRIBUTE(x)
#endif

#define VX3_CAPABILITY(x) VX3_THREAD_ATTRIBUTE(capability(x))
#define VX3_SCOPED_CAPABILITY VX3_THREAD_ATTRIBUTE(scoped_lockable)
#define VX3_GUARDED_BY(x) VX3_THREAD_ATTRIBUTE(guarded_by(x))
#define VX3_PT_GUARDED_BY(x) VX3_THREAD_ATTRIBUTE(pt_guarded_by(x))
#define VX3_REQUIRES(...) VX3_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define VX3_EXCLUDES(...) VX3_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define VX3_ACQUIRE(...) VX3_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VX3_RELEASE(...) VX3_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define VX3_TRY_ACQUIRE(...) VX3_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define VX3_NO_THREAD_SAFETY_ANALYSIS VX3_THREAD_ATTRIBUTE(no_thread_safety_analysis)
