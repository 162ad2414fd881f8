#pragma once

#include <host/text/Stop.h>

namespace host {

/// The threads that the library takes at once.
constexpr int libraryThreads = 8;

/// A call to the library in the process: while it lasts it has one of the library's thread indexes to itself.
/// There may be more threads than indexes, those of several runs too; they wait here for their turn.
class LibraryCall
{
public:
    explicit LibraryCall(const StopToken& stop);
    ~LibraryCall();
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

    int thread() const { return thread_; }
    void* token() const;

private:
    const StopToken& stop_;
    int thread_;
};

} // namespace host
