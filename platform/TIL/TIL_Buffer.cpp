#include <TIL/TIL_Buffer.h>

#include <cstring>
#include <new>

namespace {

constexpr std::align_val_t alignment{64};
constexpr int64_t padding = 64;

} // namespace

TIL_Buffer::TIL_Buffer(int64_t bytes)
{
    const size_t size = static_cast<size_t>(bytes + padding);
    data_.reset(::operator new(size, alignment));
    std::memset(data_.get(), 0, size);
}

void TIL_Buffer::Release::operator()(void* data) const
{
    ::operator delete(data, alignment);
}
