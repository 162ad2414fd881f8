#pragma once

#include <host/graph/Block.h>
#include <host/graph/LibraryCall.h>

#include <cstddef>
#include <new>

namespace host {

/// What lies beyond an image: its nearest pixel, or nothing.
enum class Outside { Edge, Zero };

/// By component the one of the input that it is loaded from; -1: none.
using Mapping = std::array<int, 4>;

inline Mapping mappingOf(const Components& components)
{
    Mapping mapping{-1, -1, -1, -1};
    for (size_t c = 0; c < 4; ++c)
        mapping[c] = components[c] ? static_cast<int>(c) : -1;
    return mapping;
}

/// What a node gets its inputs' pixels from, on one thread.
class Feed
{
public:
    virtual ~Feed() = default;

    /// What a node asks for: part of a plane of an input, over a rectangle and in a format of its choice.
    struct Wish
    {
        size_t input, plane;
        Window rect;
        unsigned char format;
        Mapping mapping;
        Outside outside;
    };

    /// The pixels; components that the plane lacks are left out.
    virtual Block load(const Wish& wish) = 0;

    /// The same for a plane that the node asks for no more: without a copy where that can be.
    virtual Block take(const Wish& wish) = 0;

    Block blank(const Window& rect, unsigned char format, const Components& present)
    {
        return buffers_.block(rect, format, present);
    }
    void give(Block&& block) { buffers_.give(std::move(block)); }

    /// The same pixels in another format.
    virtual Block converted(Block&& block, unsigned char format) = 0;

    /// Runs a call to the library; `call` is handed the token and the thread's index and returns 0 when there
    /// is not enough memory. What a stopped call leaves unwritten gets no further.
    template <class Call>
    void run(Call call)
    {
        const LibraryCall running(stop_);
        const int done = call(running.token(), running.thread());
        stop_.check();
        if (done == 0)
            throw std::bad_alloc();
    }

    /// Throws when the run is to stop; for work that takes long outside of the library.
    void check() const { stop_.check(); }

protected:
    Feed(Buffers& buffers, const StopToken& stop) : buffers_(buffers), stop_(stop) {}

    Buffers& buffers_;
    const StopToken& stop_;
};

} // namespace host
