// Codes and numbers of components and classic sound.
#pragma once

#include "tests/platform/headers/code_checks.h"

#include <Carbon/Carbon.h>

CODE(kAppleManufacturer, "appl");
CODE(kSoundOutputDeviceType, "sdev");
CODE(kSoundComponentType, "sift");
CODE(kMixerType, "mixr");
CODE(kSourceType, "sour");
CODE(kSoundNotCompressed, "NONE");
CODE(kOffsetBinary, "raw ");
CODE(kTwosComplement, "twos");
CODE(k16BitLittleEndianFormat, "sowt");
CODE(siNumberChannels, "chan");
CODE(siChannelAvailable, "chav");
CODE(siSampleSize, "ssiz");
CODE(siSampleSizeAvailable, "ssav");
CODE(siSampleRate, "srat");
CODE(siSampleRateAvailable, "srav");
CODE(siVolume, "volu");
CODE(siRateMultiplier, "rmul");
CODE(siQuality, "qual");

NUMBER(kComponentOpenSelect, -1);
NUMBER(kComponentCloseSelect, -2);
NUMBER(kComponentCanDoSelect, -3);
NUMBER(kComponentVersionSelect, -4);
NUMBER(kComponentRegisterSelect, -5);
NUMBER(kComponentTargetSelect, -6);
NUMBER(kComponentUnregisterSelect, -7);
NUMBER(kAnyComponentType, 0);
NUMBER(kAnyComponentSubType, 0);
NUMBER(kAnyComponentManufacturer, 0);
NUMBER(kAnyComponentFlagsMask, 0);
NUMBER(invalidComponentID, -3000);
NUMBER(validInstancesExist, -3001);
NUMBER(componentNotCaptured, -3002);
NUMBER(componentDontRegister, -3003);
NUMBER(unresolvedComponentDLLErr, -3004);
NUMBER(badComponentInstance, 0x80008001);
NUMBER(badComponentSelector, 0x80008002);
NUMBER(kPascalStackBased, 0);
NUMBER(kCStackBased, 1);
NUMBER(memFullErr, -108);
NUMBER(nilHandleErr, -109);
NUMBER(memWZErr, -111);
NUMBER(kSourcePaused, 1);
NUMBER(kPassThrough, 0x10000);
NUMBER(kNoSoundComponentChain, 0x20000);
NUMBER(noHardwareErr, -200);
NUMBER(notEnoughHardwareErr, -201);
NUMBER(queueFull, -203);
NUMBER(badChannel, -205);
NUMBER(badFormat, -206);
NUMBER(notEnoughBufferSpace, -207);
NUMBER(channelBusy, -209);
NUMBER(siInvalidCompression, -223);
NUMBER(siInvalidSampleRate, -225);
NUMBER(siInvalidSampleSize, -226);
NUMBER(siUnknownInfoType, -231);
NUMBER(kSoundComponentInitOutputDeviceSelect, 1);
NUMBER(kSoundComponentSetSourceSelect, 2);
NUMBER(kSoundComponentGetSourceSelect, 3);
NUMBER(kSoundComponentGetSourceDataSelect, 4);
NUMBER(kSoundComponentSetOutputSelect, 5);
NUMBER(kDelegatedSoundComponentSelectors, 256);
NUMBER(kSoundComponentAddSourceSelect, 257);
NUMBER(kSoundComponentRemoveSourceSelect, 258);
NUMBER(kSoundComponentGetInfoSelect, 259);
NUMBER(kSoundComponentSetInfoSelect, 260);
NUMBER(kSoundComponentStartSourceSelect, 261);
NUMBER(kSoundComponentStopSourceSelect, 262);
NUMBER(kSoundComponentPauseSourceSelect, 263);
NUMBER(kSoundComponentPlaySourceBufferSelect, 264);
NUMBER(kFullVolume, 256);
NUMBER(kNoVolume, 0);

static_assert(static_cast<OSErr>(badComponentInstance) == -32767);
static_assert(static_cast<OSErr>(badComponentSelector) == -32766);
