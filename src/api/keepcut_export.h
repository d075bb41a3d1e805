/* Marks the engine's entries for export from the shared library; everything
   else is built with hidden visibility. */
#ifndef KEEPCUT_EXPORT_H
#define KEEPCUT_EXPORT_H

#if defined(__GNUC__)
#define KC_EXPORT __attribute__((visibility("default")))
#else
#define KC_EXPORT
#endif

#ifdef __cplusplus
#define KC_EXTERN_C_BEGIN extern "C" {
#define KC_EXTERN_C_END }
#else
#define KC_EXTERN_C_BEGIN
#define KC_EXTERN_C_END
#endif

#endif
