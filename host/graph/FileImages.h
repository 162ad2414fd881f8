#pragma once

#include <host/file/Band.h>
#include <host/file/Reader.h>
#include <host/file/Writer.h>
#include <host/graph/Interleaving.h>
#include <host/graph/Source.h>

#include <memory>
#include <vector>

namespace host {

/// An image file that a graph reads, from top to bottom, in blocks of rows that are kept as long as needed.
class FileSource : public Source
{
public:
    explicit FileSource(const std::string& path);

    const Picture& picture() const override { return reader_->picture(); }
    const std::vector<std::string>& notes() const { return reader_->notes(); }
    void rewind() override;
    void fetch(size_t part, int begin, int end, const std::function<void()>& checkStopped) override;
    void load(const Picture::Place& place, const Window& rect, const Arrays& arrays) const override;

private:
    /// The rows of a part, in blocks that the file is read by; null those that are not there.
    struct Part
    {
        std::vector<Interleaving> layouts; ///< by plane
        std::vector<std::unique_ptr<Band>> blocks;
        int rowsPerBlock = 1;
        size_t oldest = 0; ///< no block before it is there
        size_t next = 0;   ///< the block to read next
    };

    std::unique_ptr<Reader> reader_;
    std::vector<Part> parts_;
    std::vector<std::unique_ptr<Band>> spare_;
};

/// An image file that a graph writes.
class FileSink : public Sink
{
public:
    FileSink(const std::string& path, const Picture& picture);

    const Picture& picture() const override { return picture_; }
    const Writer& writer() const { return *writer_; }
    void prepare(size_t slot, size_t part, int yBegin, int yEnd) override;
    void store(size_t slot, const Picture::Place& place, const Window& rect, const Block& block) override;
    void write(size_t slot, const std::function<void()>& checkStopped) override;
    void finish() override { writer_->finish(); }
    void commit() override { writer_->commit(); }

private:
    Picture picture_;
    std::unique_ptr<Writer> writer_;
    std::vector<std::vector<Interleaving>> layouts_; ///< by part and plane
    Band bands_[slots];
    size_t bandParts_[slots] = {};
    size_t part_ = 0; ///< that is being written
};

} // namespace host
