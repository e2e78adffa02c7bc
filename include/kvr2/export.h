/**
 * What all public headers share: linkage, visibility, and checks of record layouts.
 *
 * The headers compile as C11 and as C++20. Records that compiled programs share with the library
 * carry a check of every field's offset, so that a compiler or flag that would lay them out
 * otherwise is refused at once.
 */
#ifndef KVR2_EXPORT_H
#define KVR2_EXPORT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define ZVK_BEGIN_DECLS extern "C" {
#define ZVK_END_DECLS }
#define ZVK_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define ZVK_BEGIN_DECLS
#define ZVK_END_DECLS
#define ZVK_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/**
 * Marks an entry point or data object that the library exports. Everything else in it is hidden.
 */
#define ZVK_EXPORT __attribute__((visibility("default")))

/** Refuses to compile unless `field` of the structure `type` lies at byte `offset`. */
#define ZVK_AT(type, field, offset) ZVK_STATIC_ASSERT(offsetof(type, field) == (offset), #type "." #field)

/** A routine of a host or of compiled code that is stored as a plain address. */
#ifdef __cplusplus
extern "C" typedef void (*ZvkRoutine)(void);
#else
typedef void (*ZvkRoutine)(void);
#endif

#endif
