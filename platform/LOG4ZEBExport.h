#ifndef PLATFORM_LOG4ZEBEXPORT_H
#define PLATFORM_LOG4ZEBEXPORT_H

// LOG4ZEB_EXPORT marks what the shared library kivlog4zeb lets an application see; everything
// without the mark is hidden. LOG4ZEB_LIBRARY_EXPORT marks the functions that a library loaded by
// a configuration document offers.

#if defined(_WIN32)
#define LOG4ZEB_LIBRARY_EXPORT __declspec(dllexport)
#if defined(LOG4ZEB_STATIC)
#define LOG4ZEB_EXPORT
#elif defined(LOG4ZEB_BUILDING)
#define LOG4ZEB_EXPORT __declspec(dllexport)
#else
#define LOG4ZEB_EXPORT __declspec(dllimport)
#endif
#else
#define LOG4ZEB_LIBRARY_EXPORT __attribute__((visibility("default")))
#define LOG4ZEB_EXPORT __attribute__((visibility("default")))
#endif

// LOG4ZEB_HOT marks the definitions that every event comes through. They stand together in the
// library: after a system call the processor reads them back from a few pages. LOG4ZEB_COLD keeps
// what is seldom needed out of them. LOG4ZEB_INLINE has the compiler
// put what is small into its callers on that way.
#if defined(__GNUC__)
#define LOG4ZEB_HOT __attribute__((hot))
#define LOG4ZEB_COLD __attribute__((cold, noinline))
#define LOG4ZEB_INLINE __attribute__((always_inline))
#else
#define LOG4ZEB_HOT
#define LOG4ZEB_COLD
#define LOG4ZEB_INLINE
#endif

#endif
