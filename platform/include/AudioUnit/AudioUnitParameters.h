/* The parameters of the units: numbers that may change while sound runs. C. */
#ifndef AUDIOUNIT_AUDIOUNITPARAMETERS_H
#define AUDIOUNIT_AUDIOUNITPARAMETERS_H

/* output units that drive a device */
enum { kHALOutputParam_Volume = 14 }; /* global; linear gain 0 to 1 */

/* multichannel mixer; each of the levels is that of its first channel, the others' follow it */
enum {
    kMultiChannelMixerParam_Volume = 0,              /* input and output; linear gain 0 to 1 */
    kMultiChannelMixerParam_Enable = 1,              /* input; 0 or 1 */
    kMultiChannelMixerParam_Pan = 2,                 /* input; -1 left to 1 right, of two channels */
    kMultiChannelMixerParam_PreAveragePower = 1000,  /* input and output, decibels, read; before the fader */
    kMultiChannelMixerParam_PrePeakHoldLevel = 2000, /* likewise */
    kMultiChannelMixerParam_PostAveragePower = 3000, /* behind the fader */
    kMultiChannelMixerParam_PostPeakHoldLevel = 4000
};

/* graphic equaliser: parameters 0 to 9, or 0 to 30, are the gains of its bands in decibels, -20 to 20 */
enum { kGraphicEQParam_NumberOfBands = 10000 }; /* global; 0: 10 bands, 1: 31 bands */

/* varispeed: two views of one value, both global */
enum {
    kVarispeedParam_PlaybackRate = 0, /* 0.25 to 4 */
    kVarispeedParam_PlaybackCents = 1 /* -2400 to 2400 */
};

/* the classic time-pitch unit, global */
enum {
    kTimePitchParam_Rate = 0, /* 1/32 to 32 */
    kTimePitchParam_Pitch = 1 /* cents, -2400 to 2400 */
};

/* the newer time-pitch unit, global */
enum {
    kNewTimePitchParam_Rate = 0,             /* 1/32 to 32 */
    kNewTimePitchParam_Pitch = 1,            /* cents, -2400 to 2400 */
    kNewTimePitchParam_Overlap = 4,          /* 3 to 32 */
    kNewTimePitchParam_EnablePeakLocking = 6 /* 0 or 1 */
};

#endif
