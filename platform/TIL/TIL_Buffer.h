#pragma once

#include <SYS/SYS_API.h>

#include <cstdint>
#include <memory>

/// Zeroed memory on a 64-byte boundary with 64 spare bytes behind it, so that wide loads may run over the
/// end.
class PLATFORM_API TIL_Buffer
{
public:
    TIL_Buffer() = default;
    explicit TIL_Buffer(int64_t bytes);

    void* data() { return data_.get(); }
    const void* data() const { return data_.get(); }

private:
    struct Release
    {
        void operator()(void* data) const;
    };
    std::unique_ptr<void, Release> data_;
};
