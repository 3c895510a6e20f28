/*
 * Parameters of the units: Float32 values that may be set at any time. C.
 *
 * Scope and element are 0 (global) unless stated otherwise.
 */
#ifndef AUDIOUNIT_AUDIOUNITPARAMETERS_H
#define AUDIOUNIT_AUDIOUNITPARAMETERS_H

/* parameters of output units that have a device */
enum { kHALOutputParam_Volume = 14 }; /* linear gain 0 to 1 */

/*
 * Parameters of the multichannel mixer, in the input and the output scope; the element is the bus. The ID
 * of a level below is that of channel 0; add the channel number for the ID of another channel. Levels are
 * -120 to 120 dB, and -120 while metering is off.
 */
enum {
    kMultiChannelMixerParam_Volume = 0,              /* linear gain 0 to 1 */
    kMultiChannelMixerParam_Enable = 1,              /* input scope; 1: on, 0: off */
    kMultiChannelMixerParam_Pan = 2,                 /* input scope; -1 left to 1 right; stereo output only */
    kMultiChannelMixerParam_PreAveragePower = 1000,  /* dB, read-only; before volume and enable */
    kMultiChannelMixerParam_PrePeakHoldLevel = 2000, /* dB, read-only; before volume and enable */
    kMultiChannelMixerParam_PostAveragePower = 3000, /* dB, read-only; after volume and enable */
    kMultiChannelMixerParam_PostPeakHoldLevel = 4000 /* dB, read-only; after volume and enable */
};

/* parameters of the graphic equaliser; IDs 0 to 9, or 0 to 30, are the gains of its bands, -20 to 20 dB */
enum { kGraphicEQParam_NumberOfBands = 10000 }; /* 0: 10 bands, 1: 31 bands */

/* parameters of varispeed; both set the same value in other units, so the last one set applies */
enum {
    kVarispeedParam_PlaybackRate = 0, /* input frames per output frame, 0.25 to 4 */
    kVarispeedParam_PlaybackCents = 1 /* cents, -2400 to 2400 */
};

/* parameters of the classic time-pitch unit */
enum {
    kTimePitchParam_Rate = 0, /* input frames per output frame, 1/32 to 32 */
    kTimePitchParam_Pitch = 1 /* cents, -2400 to 2400 */
};

/* parameters of the newer time-pitch unit */
enum {
    kNewTimePitchParam_Rate = 0,             /* input frames per output frame, 1/32 to 32 */
    kNewTimePitchParam_Pitch = 1,            /* cents, -2400 to 2400 */
    kNewTimePitchParam_Overlap = 4,          /* 3 to 32; from 8 on the finer engine */
    kNewTimePitchParam_EnablePeakLocking = 6 /* 0 or 1; no effect */
};

#endif
