/*
 * export.h - what every public header of libqalt_at needs: C linkage and symbol visibility.
 *
 * The library is built with hidden visibility; exactly the names declared with QALT_API leave it.
 *
 * A note for linters, said once for all headers: some exported names begin with an underscore
 * ("_Find_Cmd_By_ID", "_PBB_UseEmptyIndex"). They are part of the library's binary interface and
 * stay. They are the steps of the public operations, exported so that a client can use them alone.
 */
#ifndef QALT_AT_EXPORT_H
#define QALT_AT_EXPORT_H

#if defined(__GNUC__)
#define QALT_API __attribute__((visibility("default")))
#define QALT_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define QALT_API
#define QALT_PRINTF(format_index, first_argument)
#endif

#ifdef __cplusplus
#define QALT_BEGIN_DECLS extern "C" {
#define QALT_END_DECLS }
#else
#define QALT_BEGIN_DECLS
#define QALT_END_DECLS
#endif

#endif /* QALT_AT_EXPORT_H */
