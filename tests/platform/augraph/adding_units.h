// A small set of components in place of the built-in ones. The adding units can be observed and made to fail.
//
//   'aufx' 'odd '   a component that is not an audio unit; a search finds it first
//   'aufx' 'add '   the sum of its inputs plus a constant; 1 to 4 inputs, 2 outputs
//   'aufx' 'addf'   the same for any format
//   'auou' 'genr'   an output unit that the test renders, like the built-in generic output
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <vector>

namespace test {

/// Set the constant that an adding unit adds to each sample.
void setConstant(AudioUnit unit, Float32 constant);

bool isInitialized(AudioUnit unit);

/// The adding units in the order of their initialisation.
std::vector<AudioUnit>& initializedInOrder();

/// Let the opening or initialisation number `which` of an adding unit fail, counted from 1; 0 lets none fail.
void failOpening(int which);
void failInitialization(int which);
constexpr OSStatus failure = -12345;

} // namespace test
