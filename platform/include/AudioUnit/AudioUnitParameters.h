/* The parameters of the units: numbers that may change while sound runs. C. */
#ifndef AUDIOUNIT_AUDIOUNITPARAMETERS_H
#define AUDIOUNIT_AUDIOUNITPARAMETERS_H

/* output units that drive a device */
enum { kHALOutputParam_Volume = 14 }; /* global; linear gain 0 to 1 */

#endif
