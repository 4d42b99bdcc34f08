// Names for clang's thread-safety attributes; other compilers see nothing.
#pragma once

#if defined(__clang__)
#define TORVIK_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define TORVIK_THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) TORVIK_THREAD_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY TORVIK_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) TORVIK_THREAD_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) TORVIK_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) TORVIK_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) TORVIK_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define RELEASE(...) TORVIK_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define EXCLUDES(...) TORVIK_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS TORVIK_THREAD_ATTRIBUTE(no_thread_safety_analysis)
