#include <host/Cook.h>

#include <host/Error.h>
#include <host/Format.h>
#include <host/Names.h>
#include <host/Pipeline.h>
#include <host/PlaneCook.h>
#include <host/Reader.h>
#include <host/Writer.h>

#include <PXL/PXL_Caps.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <thread>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// For each plane of an image, whether to work on it.
std::vector<bool> choosePlanes(const Image& image, const std::vector<std::string>& wanted)
{
    std::vector<bool> chosen;
    const bool all = wanted == std::vector<std::string>{"all"};
    for (const Plane& plane : image.planes)
        chosen.push_back(all || (wanted.empty()
                                     ? plane.colour
                                     : std::find(wanted.begin(), wanted.end(), plane.name) != wanted.end()));
    const std::vector<std::string> names = image.planeNames();
    for (const std::string& name : wanted)
        if (!all && std::find(names.begin(), names.end(), name) == names.end())
            refuseName("'" + image.path + "' has no plane", name, names);
    if (std::find(chosen.begin(), chosen.end(), true) == chosen.end())
        refuse("'" + image.path +
               "' has no plane with colour; choose from its planes with --planes: " + joined(names));
    return chosen;
}

void checkSettings(const std::string& input, const std::string& output, const CookSettings& settings)
{
    if (settings.threads < 1 || settings.threads > maxThreads)
        refuse("threads: " + std::to_string(settings.threads) + " is not from 1 to " +
               std::to_string(maxThreads));
    if (settings.tile < 1 || settings.tile > 4096)
        refuse("tile: " + std::to_string(settings.tile) + " is not from 1 to 4096");
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored))
        refuse("the output is the input, '" + input + "'; give it another name");
}

void checkPoints(const Plane& plane, const std::string& path, const CookSettings& settings)
{
    if (!settings.black && !settings.white)
        return;
    const std::string format = formatName(plane.format);
    if (plane.format > PXL_FORMAT_uint32)
        refuse("'" + path + "': black and white points are codes of integer formats, and plane '" +
               plane.name + "' is " + format);
    if (settings.depth && *settings.depth != plane.format)
        refuse("black and white points are codes of one format; leave out the conversion from " + format +
               " to " + formatName(*settings.depth));
    const unsigned int full = PXLfullWhite(plane.format);
    const unsigned int black = settings.black.value_or(0);
    const unsigned int white = settings.white.value_or(full);
    if (white > full)
        refuse("white point " + std::to_string(white) + " is above " + std::to_string(full) +
               ", the last code of " + format);
    if (black >= white)
        refuse("black point " + std::to_string(black) + " is not below the white point " +
               std::to_string(white));
}

/// The library's tables for 8-bit codes span the full range on purpose.
bool ignoresPoints(const Plane& plane, const Operation& operation, const CookSettings& settings)
{
    return (settings.black || settings.white) && plane.format == PXL_FORMAT_uint8 && !operation.isCopy() &&
           !operation.isFilter() && !operation.readsAllComponents;
}

bool isTurned(const CancelSwitch* cancel)
{
    return cancel != nullptr && cancel->load(std::memory_order_relaxed);
}

/// One run of cook().
class Job
{
public:
    Job(const std::string& input, const std::string& output, const Operation& operation,
        const CookSettings& settings);

    CookReport run();

private:
    struct Slot
    {
        Band in, out;
    };

    static bool interrupted(void* data, int) { return isTurned(static_cast<Job*>(data)->settings_.cancel); }

    void checkStopped() const { host::checkStopped(settings_.cancel); }

    int fill(int64_t band, Slot& slot);
    void work(int64_t band, Slot& slot, int piece, int thread);
    void drain(int64_t band, Slot& slot);
    Band& outputOf(Slot& slot) const { return inPlace_ ? slot.in : slot.out; }

    const Operation& operation_;
    const CookSettings& settings_;
    Reader reader_;
    Image output_;
    Tiling tiling_;
    bool inPlace_ = true; ///< bands go out in the memory that they came in
    bool anyWork_ = false;
    std::vector<PlaneCook> planes_;
    std::unique_ptr<Writer> writer_;
    std::vector<Slot> slots_;
    std::vector<Workspace> workspaces_;
    const Band* previous_ = nullptr; ///< the band that was filled before
    std::atomic<int64_t> workNanoseconds_{0};
    CookReport report_;
};

Job::Job(const std::string& input, const std::string& output, const Operation& operation,
         const CookSettings& settings)
    : operation_(operation), settings_(settings), reader_(input),
      output_(settings.depth ? reader_.image().withFormat(*settings.depth) : reader_.image()),
      tiling_(reader_.image().data, reader_.image().rowBytes(), settings.tile), slots_(3),
      workspaces_(static_cast<size_t>(settings.threads))
{
    const Image& image = reader_.image();
    const std::vector<bool> chosen = choosePlanes(image, settings.planes);
    bool converts = false;
    for (size_t p = 0; p < image.planes.size(); ++p) {
        const Plane& plane = image.planes[p];
        const bool works = chosen[p] && !operation.isCopy();
        if (chosen[p]) {
            checkPoints(plane, image.path, settings);
            report_.planes.push_back(plane.name);
            if (ignoresPoints(plane, operation, settings))
                report_.notes.push_back("'" + image.path + "': plane " + plane.name +
                                        " is uint8 and graded over the full range, whatever the points are");
        }
        planes_.emplace_back(image, output_, p, works ? &operation : nullptr, settings);
        anyWork_ = anyWork_ || planes_.back().writes();
        converts = converts || plane.format != output_.planes[p].format;
    }
    if (!anyWork_ && !operation.isCopy())
        refuse("'" + input + "': the scope names no component of " + joined(report_.planes));
    inPlace_ = !converts && !operation.isFilter();
    anyWork_ = anyWork_ || !inPlace_;
    writer_ = std::make_unique<Writer>(output, output_);
    report_.notes.insert(report_.notes.end(), writer_->notes().begin(), writer_->notes().end());
    report_.output = output_;
    report_.output.path = output;
}

CookReport Job::run()
{
    RU_Algorithm::setInterruptCallback(interrupted);
    if (!operation_.isCopy())
        operation_.algorithm->initialize(0.0f);
    const auto slotAt = [this](int slot) -> Slot& { return slots_[static_cast<size_t>(slot)]; };
    Pipeline pipeline;
    pipeline.bands = tiling_.bands;
    pipeline.slots = static_cast<int>(slots_.size());
    pipeline.threads = anyWork_ ? settings_.threads : 1; // one to wave bands without work through
    pipeline.fill = [&](int64_t band, int slot) { return fill(band, slotAt(slot)); };
    pipeline.work = [&](int64_t band, int slot, int piece, int thread) {
        work(band, slotAt(slot), piece, thread);
    };
    pipeline.drain = [&](int64_t band, int slot) { drain(band, slotAt(slot)); };
    pipeline.run();
    checkStopped();
    const Clock::time_point start = Clock::now();
    writer_->commit();
    report_.writeSeconds += secondsSince(start);
    report_.workSeconds = static_cast<double>(workNanoseconds_) * 1e-9;
    return std::move(report_);
}

/// Reads the rows of a band and those around it that a filter needs; the first of them are in the band
/// before.
int Job::fill(int64_t band, Slot& slot)
{
    const Clock::time_point start = Clock::now();
    const Image& image = reader_.image();
    const int top = image.data.y;
    const int bottom = top + image.data.height;
    const int begin = std::max(tiling_.bandBegin(band) - operation_.border, top);
    const int end = std::min(tiling_.bandEnd(band) + operation_.border, bottom);
    slot.in.reset(image, begin, end);
    if (!inPlace_)
        slot.out.reset(output_, tiling_.bandBegin(band), tiling_.bandEnd(band));

    int y = begin;
    if (previous_ != nullptr && previous_->yEnd() > begin) {
        y = previous_->yEnd();
        std::memcpy(slot.in.row(begin), previous_->row(begin),
                    static_cast<size_t>((y - begin) * slot.in.rowBytes()));
    }
    while (y < end) {
        checkStopped();
        const int next = std::min(end, reader_.callEnd(y));
        reader_.read(y, next, slot.in.row(y));
        y = next;
    }
    previous_ = &slot.in;
    report_.readSeconds += secondsSince(start);
    return anyWork_ ? tiling_.pieces(band) : 0;
}

void Job::work(int64_t band, Slot& slot, int piece, int thread)
{
    const Clock::time_point start = Clock::now();
    const Window rect = tiling_.tile(band, piece);
    Workspace& workspace = workspaces_[static_cast<size_t>(thread)];
    for (const PlaneCook& plane : planes_) {
        if (plane.isNeeded(inPlace_))
            plane.run(slot.in, outputOf(slot), rect, workspace, this, thread);
        checkStopped(); // what an interrupted call left unwritten must not get any further
    }
    workNanoseconds_ += std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
}

void Job::drain(int64_t band, Slot& slot)
{
    const Clock::time_point start = Clock::now();
    const int end = tiling_.bandEnd(band);
    writer_->write(outputOf(slot), tiling_.bandBegin(band), end, [this] { checkStopped(); });
    report_.writeSeconds += secondsSince(start);
    if (settings_.progress)
        settings_.progress(end - output_.data.y, output_.data.height);
}

} // namespace

void checkStopped(const CancelSwitch* cancel)
{
    if (isTurned(cancel))
        throw Error(Error::Kind::Cancelled, "stopped");
}

const char* instructionSet()
{
    return PXLinstructionSetName(PXLinstructionSet());
}

int defaultThreads()
{
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, maxThreads);
}

CookReport cook(const std::string& input, const std::string& output, const Operation& operation,
                const CookSettings& settings)
{
    static std::mutex oneAtATime; // the library knows a running call by its thread's index alone
    const std::lock_guard lock(oneAtATime);
    checkSettings(input, output, settings);
    const Clock::time_point start = Clock::now();
    try {
        CookReport report = Job(input, output, operation, settings).run();
        report.seconds = secondsSince(start);
        return report;
    } catch (const Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw Error(Error::Kind::Read, "'" + input + "': there is not enough memory");
    } catch (const std::exception& error) {
        throw Error(Error::Kind::Read, "'" + input + "': " + firstLine(error.what()));
    }
}

} // namespace host
