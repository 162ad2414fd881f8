#pragma once

#include <host/file/Picture.h>
#include <host/graph/Block.h>

#include <functional>

namespace host {

/// Where a picture comes from. Rows are fetched ahead of the work that loads them.
class Source
{
public:
    virtual ~Source() = default;

    virtual const Picture& picture() const = 0;

    /// Begins again at the first rows.
    virtual void rewind() {}

    /// Gets the rows of a part up to `end` ready, and forgets those before `begin`, which nobody asks for any
    /// more. One thread calls it, with rows that never go back; `checkStopped` is called now and then and may
    /// throw.
    virtual void fetch(size_t /*part*/, int /*begin*/, int /*end*/,
                       const std::function<void()>& /*checkStopped*/)
    {
    }

    /// Fills arrays with a plane's components, where wanted, over a rectangle of rows that are ready; any
    /// thread.
    virtual void load(const Picture::Place& place, const Window& rect, const Arrays& arrays) const = 0;
};

/// Where a picture goes, part after part.
class Sink
{
public:
    virtual ~Sink() = default;

    /// What it is going to be given.
    virtual const Picture& picture() const = 0;

    /// Makes room for rows in one of `slots` bands.
    virtual void prepare(size_t slot, size_t part, int yBegin, int yEnd) = 0;

    /// Stores a plane's pixels over a rectangle of a band, out of a block around it; any thread.
    virtual void store(size_t slot, const Picture::Place& place, const Window& rect, const Block& block) = 0;

    /// Writes a band, the next one of its part; `checkStopped` as for sources.
    virtual void write(size_t slot, const std::function<void()>& checkStopped) = 0;

    /// All parts are there. Throws where they cannot be stored.
    virtual void finish() {}

    /// The outputs of all are finished; until now nobody has seen anything of them.
    virtual void commit() {}

    static constexpr size_t slots = 3;
};

} // namespace host
