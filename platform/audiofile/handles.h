// Handles of open files, for AudioFile and ExtAudioFile.
#pragma once

#include "platform/support/handle_table.h"

#include <cstdint>
#include <memory>

namespace kvxplatform::audiofile {

/// The table of open files of type T, with handles of type Ref. `kind` differs between AudioFile and
/// ExtAudioFile, so that neither interface accepts a handle of the other.
/// [any]
template <class T, class Ref, std::uint32_t kind>
class Handles {
public:
    using Table = HandleTable<T, kind>;
    using Use = typename Table::Use;

    /// Register a file. Returns its handle; null if the table is full. Throws std::bad_alloc.
    static Ref add(std::unique_ptr<T> file)
    {
        const HandleNumber number = table().add(std::move(file), [](T&, HandleNumber) { return true; });
        return handleOf<Ref>(number);
    }

    /// Find the file of a handle. The result is empty for a null, closed or unknown handle.
    static Use use(Ref ref) { return table().use(numberOf(ref)); }

    /// Withdraw a handle. The file is freed when the last call that uses the file ends. Returns false for a
    /// null, closed or unknown handle.
    static bool close(Ref ref)
    {
        Use closing = table().beginClose(numberOf(ref));
        if (!closing) return false;
        table().endClose(std::move(closing));
        return true;
    }

private:
    // The table is never destroyed, because a file may be closed while the process exits.
    static Table& table()
    {
        static Table& all = *new Table;
        return all;
    }
};

} // namespace kvxplatform::audiofile
