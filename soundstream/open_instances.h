// Which instances of the component are open.
//
// A request comes with its instance's storage, and may still be under way when another thread closes the
// instance: a completion routine does, on the render thread. So the storage is looked up before it is used,
// and held until the request ends.
//
// A place is never given back, only used again; there are as many as instances were ever open at one time.
#pragma once

namespace soundstream {

struct QTSoundStreamGlobals;

struct OpenPlace {
    QTSoundStreamGlobals* globals; ///< null: free. Published
    int seekers;                   ///< how many look at it right now
    OpenPlace* next;               ///< fixed
};

/// A place for a new instance, which is open from now on; null without memory. [client]
OpenPlace* openPlace(QTSoundStreamGlobals& globals);

/// The open instance behind a storage, held for the caller; null for one that is closed. Takes no lock.
/// [client]
QTSoundStreamGlobals* holdOpen(const void* storage);

/// Whether nobody has closed it yet. [client]
bool isOpen(const QTSoundStreamGlobals& globals);

/// It is open no more, and nobody finds it; true for the one caller who closed it. [client]
bool closePlace(QTSoundStreamGlobals& globals);

} // namespace soundstream
