/*
 * qalt_at.h - everything of libqalt_at.
 *
 * A client usually needs phonebook.h (contacts), text.h (their texts) and link.h (pushed reports);
 * the other headers are the layers below. Conventions, results, thread and stack needs stand at the
 * head of each.
 */
#ifndef QALT_AT_QALT_AT_H
#define QALT_AT_QALT_AT_H

#include "qalt_at/commands.h"
#include "qalt_at/link.h"
#include "qalt_at/parameters.h"
#include "qalt_at/parser.h"
#include "qalt_at/phonebook.h"
#include "qalt_at/text.h"
#include "qalt_at/version.h"

#endif /* QALT_AT_QALT_AT_H */
