#ifndef OMTREE_PLATFORM_EXPORT_H
#define OMTREE_PLATFORM_EXPORT_H

/// Visibility of the two platform libraries: PLATDEP_API marks what `libplatdep` exports, QUORIOCV_API what
/// `libQUORIOCV` exports. Everything else in them is hidden.

#if defined(_WIN32)
#if defined(PLATDEP_BUILDING)
#define PLATDEP_API __declspec(dllexport)
#else
#define PLATDEP_API __declspec(dllimport)
#endif
#if defined(QUORIOCV_BUILDING)
#define QUORIOCV_API __declspec(dllexport)
#else
#define QUORIOCV_API __declspec(dllimport)
#endif
#else
#define PLATDEP_API __attribute__((visibility("default")))
#define QUORIOCV_API __attribute__((visibility("default")))
#endif

#endif
