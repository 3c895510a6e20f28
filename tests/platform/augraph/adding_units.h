// A small set of test components that replaces the built-in ones. Tests can observe the adding units and make
// them fail.
//
//   'aufx' 'odd '   component that is not an audio unit and that a search finds first
//   'aufx' 'add '   adding unit: outputs the sum of its inputs plus a constant; 1 to 4 inputs, 2 outputs
//   'aufx' 'addf'   like 'add ', but accepts any stream format
//   'auou' 'genr'   output unit that the test renders, like the built-in generic output unit
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <vector>

namespace test {

/// Set the constant that an adding unit adds to each sample.
void setConstant(AudioUnit unit, Float32 constant);

bool isInitialized(AudioUnit unit);

/// The list of the adding units, in the order in which they were initialised.
std::vector<AudioUnit>& initializedInOrder();

/// Make the opening or the initialisation of an adding unit fail at its `which`-th call, counted from 1. With
/// 0 no call fails.
void failOpening(int which);
void failInitialization(int which);
constexpr OSStatus failure = -12345;

} // namespace test
