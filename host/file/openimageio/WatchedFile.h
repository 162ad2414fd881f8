#pragma once

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

namespace host::openimageio {

/// The temporary file, as the libraries of the file formats write to it. What goes wrong is kept here and
/// looks done to them: some end the program on a full disk, others leave half a file without a word.
class WatchedFile : public OIIO::Filesystem::IOProxy
{
public:
    explicit WatchedFile(const std::string& path)
        : IOProxy(path, Write), file_(std::fopen(path.c_str(), "wb")), error_(file_ == nullptr ? errno : 0)
    {
    }
    ~WatchedFile() override { finish(); }

    const char* proxytype() const override { return "watched"; }
    size_t size() const override { return static_cast<size_t>(size_); }

    bool seek(int64_t offset) override
    {
        note(error_ == 0 && ::fseeko(file_, offset, SEEK_SET) != 0);
        m_pos = offset;
        return true;
    }

    size_t write(const void* bytes, size_t count) override
    {
        note(error_ == 0 && count > 0 && std::fwrite(bytes, 1, count, file_) != count);
        m_pos += static_cast<int64_t>(count);
        size_ = std::max(size_, m_pos);
        return count;
    }

    size_t pwrite(const void* bytes, size_t count, int64_t offset) override
    {
        const int64_t here = m_pos;
        seek(offset);
        write(bytes, count);
        seek(here);
        return count;
    }

    /// The first error, as errno has it; 0 for none.
    int firstError() const { return error_; }

    /// Stores what waits to be; the object takes no more.
    void finish()
    {
        if (file_ != nullptr) {
            const int result = std::fclose(file_);
            note(result != 0 && error_ == 0);
        }
        file_ = nullptr;
    }

private:
    void note(bool failed)
    {
        if (failed)
            error_ = errno;
    }

    std::FILE* file_;
    int64_t size_ = 0;
    int error_;
};

} // namespace host::openimageio
