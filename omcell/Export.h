#ifndef OMTREE_OMCELL_EXPORT_H
#define OMTREE_OMCELL_EXPORT_H

/// OMCELL_API marks what `libomcell` exports; everything else in it is hidden.

#if defined(_WIN32)
#if defined(OMCELL_BUILDING)
#define OMCELL_API __declspec(dllexport)
#else
#define OMCELL_API __declspec(dllimport)
#endif
#else
#define OMCELL_API __attribute__((visibility("default")))
#endif

#endif
