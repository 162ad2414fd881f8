#include <host/graph/Job.h>

#include <host/file/Format.h>
#include <host/file/Reader.h>
#include <host/file/Writer.h>
#include <host/graph/Pipeline.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <PXL/PXL_Caps.h>
#include <RU/framework/RU_Algorithm.h>

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

void checkSettings(const std::vector<std::string>& inputs, const std::string& output,
                   const CookSettings& settings)
{
    if (settings.threads < 1 || settings.threads > maxThreads)
        refuse("threads: " + std::to_string(settings.threads) + " is not from 1 to " +
               std::to_string(maxThreads));
    if (settings.tile < 1 || settings.tile > 4096)
        refuse("tile: " + std::to_string(settings.tile) + " is not from 1 to 4096");
    std::error_code ignored;
    for (const std::string& input : inputs)
        if (std::filesystem::equivalent(input, output, ignored))
            refuse("the output is the input, '" + input + "'; give it another name");
}

bool isTurned(const CancelSwitch* cancel)
{
    return cancel != nullptr && cancel->load(std::memory_order_relaxed);
}

/// One input of a job.
struct Input
{
    explicit Input(const std::string& path) : reader(path) {}

    Reader reader;
    const Band* previous = nullptr; ///< the band that was filled before
};

class Job
{
public:
    Job(std::vector<std::unique_ptr<Input>> inputs, Plan plan, const std::string& output,
        const CookSettings& settings);

    CookReport run();

private:
    struct Slot
    {
        std::vector<Band> in;
        Band out;
    };

    static bool interrupted(void* data, int) { return isTurned(static_cast<Job*>(data)->settings_.cancel); }

    void checkStopped() const { host::checkStopped(settings_.cancel); }

    int fill(int64_t band, Slot& slot);
    void fill(Input& input, Band& in, int yBegin, int yEnd);
    void work(int64_t band, Slot& slot, int piece, int thread);
    void drain(int64_t band, Slot& slot);
    Band& outputOf(Slot& slot) const { return plan_.inPlace ? slot.in.front() : slot.out; }

    const CookSettings& settings_;
    std::vector<std::unique_ptr<Input>> inputs_;
    Plan plan_;
    Tiling tiling_;
    Writer writer_;
    std::vector<Slot> slots_;
    std::vector<Workspace> workspaces_;
    std::atomic<int64_t> workNanoseconds_{0};
    CookReport report_;
};

Job::Job(std::vector<std::unique_ptr<Input>> inputs, Plan plan, const std::string& output,
         const CookSettings& settings)
    : settings_(settings), inputs_(std::move(inputs)), plan_(std::move(plan)),
      tiling_(plan_.output.data, plan_.output.rowBytes(), settings.tile), writer_(output, plan_.output),
      slots_(3)
{
    for (Slot& slot : slots_)
        slot.in.resize(inputs_.size());
    for (int thread = 0; thread < settings.threads; ++thread)
        workspaces_.emplace_back(settings.tile, thread, this);
    report_.planes = plan_.planes;
    report_.notes = plan_.notes;
    report_.notes.insert(report_.notes.end(), writer_.notes().begin(), writer_.notes().end());
    report_.output = plan_.output;
    report_.output.path = output;
}

CookReport Job::run()
{
    RU_Algorithm::setInterruptCallback(interrupted);
    const auto slotAt = [this](int slot) -> Slot& { return slots_[static_cast<size_t>(slot)]; };
    Pipeline pipeline;
    pipeline.bands = tiling_.bands;
    pipeline.slots = static_cast<int>(slots_.size());
    pipeline.threads = plan_.works.empty() ? 1 : settings_.threads; // to wave bands without work through
    pipeline.fill = [&](int64_t band, int slot) { return fill(band, slotAt(slot)); };
    pipeline.work = [&](int64_t band, int slot, int piece, int thread) {
        work(band, slotAt(slot), piece, thread);
    };
    pipeline.drain = [&](int64_t band, int slot) { drain(band, slotAt(slot)); };
    pipeline.run();
    checkStopped();
    const Clock::time_point start = Clock::now();
    writer_.commit();
    report_.writeSeconds += secondsSince(start);
    report_.workSeconds = static_cast<double>(workNanoseconds_) * 1e-9;
    return std::move(report_);
}

int Job::fill(int64_t band, Slot& slot)
{
    const Clock::time_point start = Clock::now();
    const int begin = tiling_.bandBegin(band), end = tiling_.bandEnd(band);
    for (size_t i = 0; i < inputs_.size(); ++i)
        fill(*inputs_[i], slot.in[i], begin - plan_.border.bottom, end + plan_.border.top);
    if (!plan_.inPlace)
        slot.out.reset(plan_.output, begin, end);
    report_.readSeconds += secondsSince(start);
    return plan_.works.empty() ? 0 : tiling_.pieces(band);
}

/// Reads those of some rows that an input has; the first of them may be in the band before.
void Job::fill(Input& input, Band& in, int yBegin, int yEnd)
{
    const Image& image = input.reader.image();
    const int begin = std::clamp(yBegin, image.data.y, image.data.y + image.data.height);
    const int end = std::clamp(yEnd, begin, image.data.y + image.data.height);
    in.reset(image, begin, end);
    int y = begin;
    if (input.previous != nullptr && input.previous->yEnd() > begin) {
        y = std::min(end, input.previous->yEnd());
        std::memcpy(in.row(begin), input.previous->row(begin),
                    static_cast<size_t>((y - begin) * in.rowBytes()));
    }
    while (y < end) {
        checkStopped();
        const int next = std::min(end, input.reader.callEnd(y));
        input.reader.read(y, next, in.row(y));
        y = next;
    }
    input.previous = &in;
}

void Job::work(int64_t band, Slot& slot, int piece, int thread)
{
    const Clock::time_point start = Clock::now();
    const Window rect = tiling_.tile(band, piece);
    for (const auto& work : plan_.works) {
        work->run(slot.in, outputOf(slot), rect, workspaces_[static_cast<size_t>(thread)]);
        checkStopped(); // what an interrupted call left unwritten must not get any further
    }
    workNanoseconds_ += std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
}

void Job::drain(int64_t band, Slot& slot)
{
    const Clock::time_point start = Clock::now();
    const int end = tiling_.bandEnd(band);
    writer_.write(outputOf(slot), tiling_.bandBegin(band), end, [this] { checkStopped(); });
    report_.writeSeconds += secondsSince(start);
    if (settings_.progress)
        settings_.progress(end - plan_.output.data.y, plan_.output.data.height);
}

} // namespace

PlaneCopy::PlaneCopy(const Image& in, const Image& out, size_t plane, const Components& copied)
    : in_(in, in.planes[plane]), out_(out, out.planes[plane])
{
    for (size_t c = 0; c < 4; ++c)
        copied_[c] = copied[c] && in_.present()[c];
}

void PlaneCopy::run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const
{
    const PlanePixels::Arrays arrays = PlanePixels::arraysOf(workspace.tiles(in_.format()), copied_);
    in_.load(in.front(), rect, in_.format(), arrays, PlanePixels::Outside::Zero, workspace);
    out_.store(in_.format(), arrays, out, rect, workspace);
}

CookReport runJob(const std::vector<std::string>& inputs, const std::string& output,
                  const CookSettings& settings, const std::function<Plan(const std::vector<Image>&)>& plan)
{
    static std::mutex oneAtATime; // the library knows a running call by its thread's index alone
    const std::lock_guard lock(oneAtATime);
    checkSettings(inputs, output, settings);
    const Clock::time_point start = Clock::now();
    try {
        std::vector<std::unique_ptr<Input>> opened;
        std::vector<Image> images;
        for (const std::string& input : inputs) {
            opened.push_back(std::make_unique<Input>(input));
            images.push_back(opened.back()->reader.image());
        }
        CookReport report = Job(std::move(opened), plan(images), output, settings).run();
        report.seconds = secondsSince(start);
        return report;
    } catch (const Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw Error(Error::Kind::Read, "'" + inputs.front() + "': there is not enough memory");
    } catch (const std::exception& error) {
        throw Error(Error::Kind::Read, "'" + inputs.front() + "': " + firstLine(error.what()));
    }
}

std::vector<bool> choosePlanes(const Image& image, const CookSettings& settings)
{
    const std::vector<std::string>& wanted = settings.planes;
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

TIL_Plane codesOf(unsigned char format, const CookSettings& settings)
{
    TIL_Plane plane(format, 4);
    if (settings.black || settings.white) {
        plane.blackWhitePoints = true;
        plane.blackPoint = settings.black.value_or(0);
        plane.whitePoint = settings.white.value_or(PXLfullWhite(format));
    }
    return plane;
}

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

} // namespace host
