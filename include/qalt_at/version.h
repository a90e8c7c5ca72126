/*
 * version.h - which libqalt_at this is.
 *
 * Conventions of this header:
 *  1. Results. Versions are "MAJOR.MINOR.PATCH". MAJOR changes with the binary interface and is the
 *     number in the library's SONAME; MINOR grows when something is added; PATCH with each mend.
 *  2. Ownership. Texts are constant data of the library.
 *  3. Threads and stack. May be called from any thread at any time; needs no stack.
 */
#ifndef QALT_AT_VERSION_H
#define QALT_AT_VERSION_H

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

/* The version of these headers: what a client was compiled with. */
#define QALT_AT_VERSION_MAJOR 1
#define QALT_AT_VERSION_MINOR 0
#define QALT_AT_VERSION_PATCH 0

/* Returns the version of the library that the process runs with, such as "1.0.0". */
QALT_API const char* QALT_AT_Version(void);

QALT_END_DECLS

#endif /* QALT_AT_VERSION_H */
