#ifndef OMTREE_BACKEND_TABLES_EXPORT_H
#define OMTREE_BACKEND_TABLES_EXPORT_H

/// OMTREE_API marks what `libomtree` exports, OMTREE_LOCAL private classes nested in an exported one. OM_ASSERT_API
/// marks the assertion handler of `backend/tables/Assert.h`, which is compiled into `libomcell` so that every library
/// above shares one handler.

#if defined(_WIN32)
#define OMTREE_LOCAL
#if defined(OMTREE_BUILDING)
#define OMTREE_API __declspec(dllexport)
#else
#define OMTREE_API __declspec(dllimport)
#endif
#if defined(OMCELL_BUILDING)
#define OM_ASSERT_API __declspec(dllexport)
#else
#define OM_ASSERT_API __declspec(dllimport)
#endif
#else
#define OMTREE_API __attribute__((visibility("default")))
#define OMTREE_LOCAL __attribute__((visibility("hidden")))
#define OM_ASSERT_API __attribute__((visibility("default")))
#endif

#endif
