/*
 * config.h - what a build of the library may change. A firmware project sets it when it configures
 * the library (-DQALT_PBB_CAPACITY=250); the installed header says what the installed library has.
 *
 * Conventions of this header:
 *  1. Sizes and units. QALT_PBB_CAPACITY counts phonebook indices, 1 to 1024.
 */
#ifndef QALT_AT_CONFIG_H
#define QALT_AT_CONFIG_H

/* Indices that the index buffer of phonebook.h knows, from 0 on: 704 bytes of bss each. */
#define QALT_PBB_CAPACITY 1024

#endif /* QALT_AT_CONFIG_H */
