// Handles of open files, that callers hold: recognised when they are closed or made up, whatever was opened
// since. And where the public calls begin: no exception leaves them.
#pragma once

#include "platform/support/border.h"
#include "platform/support/handle_table.h"

#include <Carbon/MacErrors.h>
#include <MacTypes.h>

#include <cstdint>
#include <exception>
#include <memory>

namespace kvxplatform::audiofile {

/// Files of type T, which callers know as `Ref`. `kind` tells the two interfaces' handles apart, so that
/// one's is nothing to the other.
template <class T, class Ref, std::uint32_t kind>
class Handles {
public:
    using Table = HandleTable<T, kind>;
    using Use = typename Table::Use;

    /// Null when there are too many. Throws std::bad_alloc.
    static Ref add(std::unique_ptr<T> file)
    {
        const auto number = table().add(std::move(file), [](T&, HandleNumber) { return true; });
        return handleOf<Ref>(number);
    }

    /// Empty for a handle that names nothing.
    static Use use(Ref ref) { return table().use(numberOf(ref)); }

    /// False for a handle that names nothing.
    static bool close(Ref ref)
    {
        Use closing = table().beginClose(numberOf(ref));
        if (!closing) return false;
        table().endClose(std::move(closing));
        return true;
    }

private:
    // Never destroyed: whoever still closes a file while the program ends finds it.
    static Table& table()
    {
        static Table& all = *new Table;
        return all;
    }
};

/// What `body` answers; memFullErr if memory runs out on the way.
template <class Body>
OSStatus withinBorder(Body body) noexcept
{
    return kvxplatform::withinBorder(memFullErr, body);
}

} // namespace kvxplatform::audiofile
