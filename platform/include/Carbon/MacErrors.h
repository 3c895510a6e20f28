/*
 * Status codes that several frameworks share. C.
 *
 * Each is an OSErr, apart from kPOSIXErrorBase plus an errno, which is an OSStatus.
 */
#ifndef CARBON_MACERRORS_H
#define CARBON_MACERRORS_H

enum {
    unimpErr = -4,
    openErr = -23,
    abortErr = -27,
    notOpenErr = -28,
    dirFulErr = -33,
    dskFulErr = -34,
    nsvErr = -35,
    ioErr = -36,
    bdNamErr = -37,
    fnOpnErr = -38,
    eofErr = -39,
    posErr = -40,
    mFulErr = -41,
    tmfoErr = -42,
    fnfErr = -43,
    wPrErr = -44,
    fLckdErr = -45,
    fBsyErr = -47,
    dupFNErr = -48,
    opWrErr = -49,
    paramErr = -50,
    rfNumErr = -51,
    permErr = -54,
    wrPermErr = -61,
    memFullErr = -108,
    nilHandleErr = -109,
    memAdrErr = -110,
    memWZErr = -111,
    memPurErr = -112,
    memLockedErr = -117,
    dirNFErr = -120,
    userCanceledErr = -128,
    resNotFound = -192,
    errFSBadFSRef = -1401,
    errFSNotAFolder = -1407,
    errFSNameTooLong = -1410,
    errFSMissingName = -1411,
    kMPInvalidIDErr = -29299,
    kMPTimeoutErr = -29296,
    kMPDeletedErr = -29295,
    kPOSIXErrorBase = 100000 /* plus errno */
};

#endif
