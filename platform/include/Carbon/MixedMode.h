/*
 * Procedure-information numbers, which encode the sizes of a function's result and parameters. Types only. C.
 *
 * Shape    bits 0 to 3: the calling convention, ignored here. Bits 4 and 5: the size code of the result. From
 *          bit 6 on: the size codes of up to 13 parameters, two bits each; a code of 0 ends the parameters.
 * Units    size codes: 0 none, 1 one byte, 2 two bytes, 3 four bytes (a machine word on 64-bit targets).
 */
#ifndef CARBON_MIXEDMODE_H
#define CARBON_MIXEDMODE_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

typedef unsigned long ProcInfoType;

enum { kPascalStackBased = 0, kCStackBased = 1 };

#endif
