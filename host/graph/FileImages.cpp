#include <host/graph/FileImages.h>

#include <algorithm>

namespace host {

namespace {

std::vector<Interleaving> layoutsOf(const Image& image)
{
    std::vector<Interleaving> layouts;
    for (const Plane& plane : image.planes)
        layouts.emplace_back(image, plane);
    return layouts;
}

} // namespace

FileSource::FileSource(const std::string& path) : reader_(openReader(path))
{
    for (size_t p = 0; p < picture().parts.size(); ++p) {
        const Image& image = picture().parts[p];
        Part& part = parts_.emplace_back();
        part.layouts = layoutsOf(image);
        part.rowsPerBlock = std::max(1, reader_->callEnd(p, image.data.y) - image.data.y);
        part.blocks.resize(
            static_cast<size_t>((image.data.height + part.rowsPerBlock - 1) / part.rowsPerBlock));
    }
}

void FileSource::rewind()
{
    for (Part& part : parts_) {
        part.next = part.oldest = 0;
        for (std::unique_ptr<Band>& block : part.blocks)
            block.reset();
    }
}

void FileSource::fetch(size_t number, int begin, int end, const std::function<void()>& checkStopped)
{
    Part& part = parts_[number];
    const Image& image = picture().parts[number];
    const auto blockOf = [&](int y) {
        const int64_t row = std::clamp<int64_t>(int64_t{y} - image.data.y, 0, image.data.height);
        return static_cast<size_t>(row / part.rowsPerBlock);
    };
    const size_t oldest = std::min(blockOf(begin), part.blocks.size());
    for (; part.oldest < oldest; ++part.oldest)
        if (part.blocks[part.oldest] != nullptr)
            spare_.push_back(std::move(part.blocks[part.oldest]));
    for (part.next = std::max(part.next, oldest); part.next < part.blocks.size(); ++part.next) {
        const int y = image.data.y + static_cast<int>(part.next) * part.rowsPerBlock;
        if (y >= end)
            return;
        checkStopped();
        std::unique_ptr<Band> block;
        if (!spare_.empty()) {
            block = std::move(spare_.back());
            spare_.pop_back();
        } else {
            block = std::make_unique<Band>();
        }
        block->reset(image, y, std::min(y + part.rowsPerBlock, image.data.y + image.data.height));
        reader_->read(number, y, block->yEnd(), block->row(y));
        part.blocks[part.next] = std::move(block);
    }
}

void FileSource::load(const Picture::Place& place, const Window& rect, const Arrays& arrays) const
{
    const Part& part = parts_[place.part];
    const Image& image = picture().parts[place.part];
    const int64_t rowBytes =
        static_cast<int64_t>(rect.width) * PXLbytesPerElement(picture().plane(place).format);
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
        Arrays row{};
        for (size_t c = 0; c < 4; ++c)
            if (arrays[c] != nullptr)
                row[c] = static_cast<char*>(arrays[c]) + (y - rect.y) * rowBytes;
        const Band& block = *part.blocks[static_cast<size_t>((y - image.data.y) / part.rowsPerBlock)];
        part.layouts[place.plane].split(block.pixel(rect.x, y), row.data(), rect.width);
    }
}

FileSink::FileSink(const std::string& path, const Picture& picture)
    : picture_(picture), writer_(createWriter(path, picture))
{
    picture_.path = path;
    for (Image& part : picture_.parts) {
        part.path = path;
        layouts_.push_back(layoutsOf(part));
    }
}

void FileSink::prepare(size_t slot, size_t part, int yBegin, int yEnd)
{
    bandParts_[slot] = part;
    bands_[slot].reset(picture_.parts[part], yBegin, yEnd);
}

void FileSink::store(size_t slot, const Picture::Place& place, const Window& rect, const Block& block)
{
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
        const void* row[4] = {};
        for (size_t c = 0; c < 4; ++c)
            row[c] = block.pixel(c, rect.x, y);
        layouts_[place.part][place.plane].join(row, bands_[slot].pixel(rect.x, y), rect.width);
    }
}

void FileSink::write(size_t slot, const std::function<void()>& checkStopped)
{
    const Band& band = bands_[slot];
    for (; part_ < bandParts_[slot]; ++part_)
        writer_->nextPart();
    writer_->write(band, band.yBegin(), band.yEnd(), checkStopped);
}

} // namespace host
