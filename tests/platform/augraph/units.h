// A small world of units in place of the platform's own: one whose doings can be seen and made to fail, and
// an output.
//
//   'aufx' 'odd '   a component that is no audio unit, the first that a search finds
//   'aufx' 'mark'   adds up what its inputs hear, and a number of its own; 1 to 4 inputs, 2 outputs
//   'aufx' 'free'   the same, for any format that one asks for
//   'auou' 'genr'   waits to be pulled, as the platform's does
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <vector>

namespace test {

/// The number that a unit adds to each sample.
void setMark(AudioUnit unit, Float32 mark);

bool isInitialized(AudioUnit unit);

/// Marking units, in the order in which they were initialised.
std::vector<AudioUnit>& initializedInOrder();

/// Which opening, or initialisation, of a marking unit fails from now on: the first is 1, 0 none.
void failOpening(int which);
void failInitialization(int which);
constexpr OSStatus failure = -12345;

} // namespace test
