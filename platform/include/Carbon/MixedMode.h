/*
 * Procedures, and the words that say how wide their arguments are. Preprocessor and types only. C.
 *
 * Shape    a word: bits 0 to 3 the calling convention, 4 and 5 the size code of the result, 6 and 7, 8 and 9
 *          and so on those of at most 13 parameters. Size codes: 0 none, 1 one byte, 2 two bytes, 3 four
 * bytes; 3 means a pointer's width where that is wider.
 */
#ifndef CARBON_MIXEDMODE_H
#define CARBON_MIXEDMODE_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

typedef unsigned long ProcInfoType;

enum { kPascalStackBased = 0, kCStackBased = 1 };

#endif
