/* tav_export.h - the one export macro of the library.
 *
 * TAV_API marks every class and function that the shared library exports. The library's own
 * sources are compiled with TAV_BUILDING_LIBRARY defined; programs that use the library are not.
 */
#ifndef TAV_EXPORT_H
#define TAV_EXPORT_H

#if defined(_WIN32)
#if defined(TAV_BUILDING_LIBRARY)
#define TAV_API __declspec(dllexport)
#else
#define TAV_API __declspec(dllimport)
#endif
#elif defined(__GNUC__) || defined(__clang__)
#define TAV_API __attribute__((visibility("default")))
#else
#define TAV_API
#endif

/* Marks functions of the library's private headers that its own tests, fuzz targets and tools
 * call. They are exported, but they are not part of the interface and may change. */
#define TAV_INTERNAL_API TAV_API

#ifdef __cplusplus
#define TAV_EXTERN_C_BEGIN extern "C" {
#define TAV_EXTERN_C_END }
#else
#define TAV_EXTERN_C_BEGIN
#define TAV_EXTERN_C_END
#endif

#endif /* TAV_EXPORT_H */
