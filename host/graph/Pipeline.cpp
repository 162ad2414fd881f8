#include <host/graph/Pipeline.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace host {

namespace {

class Run
{
public:
    explicit Run(const Pipeline& pipeline)
        : pipeline_(pipeline), pieces_(static_cast<size_t>(pipeline.slots)), open_(pieces_.size())
    {
    }

    void all()
    {
        std::vector<std::jthread> threads;
        guarded([&] { // those that run already are to stop when another one cannot be started
            threads.emplace_back([this] { guarded([this] { fillBands(); }); });
            for (int t = 0; t < std::max(1, pipeline_.threads); ++t)
                threads.emplace_back([this, t] { guarded([this, t] { workOnPieces(t); }); });
        });
        guarded([this] { drainBands(); });
        threads.clear(); // joins
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    template <class Stage>
    void guarded(Stage stage)
    {
        try {
            stage();
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_)
                failure_ = std::current_exception();
        }
        changed_.notify_all();
    }

    /// Waits until `ready` holds; false when the run has failed.
    template <class Ready>
    bool wait(std::unique_lock<std::mutex>& lock, Ready ready)
    {
        changed_.wait(lock, [&] { return failure_ || ready(); });
        return !failure_;
    }

    size_t slotOf(int64_t band) const { return static_cast<size_t>(band % pipeline_.slots); }

    void fillBands()
    {
        for (int64_t band = 0; band < pipeline_.bands; ++band) {
            const size_t slot = slotOf(band);
            std::unique_lock lock(mutex_);
            if (!wait(lock, [&] { return band < drained_ + pipeline_.slots; }))
                return;
            lock.unlock();
            const int pieces = pipeline_.fill(band, static_cast<int>(slot));
            lock.lock();
            pieces_[slot] = open_[slot] = pieces;
            filled_ = band + 1;
            passTakenBands();
            changed_.notify_all();
        }
    }

    /// Moves on to the next piece that nobody has taken, so that a slot is never filled again while its band
    /// waits to be passed. Bands without pieces are passed at once.
    void passTakenBands()
    {
        while (nextBand_ < filled_ && nextPiece_ == pieces_[slotOf(nextBand_)]) {
            ++nextBand_;
            nextPiece_ = 0;
        }
    }

    void workOnPieces(int thread)
    {
        std::unique_lock lock(mutex_);
        while (wait(lock, [&] { return nextBand_ < filled_ || nextBand_ == pipeline_.bands; })) {
            if (nextBand_ == pipeline_.bands)
                return;
            const int64_t band = nextBand_;
            const size_t slot = slotOf(band);
            const int piece = nextPiece_++;
            passTakenBands();
            lock.unlock();
            pipeline_.work(band, static_cast<int>(slot), piece, thread);
            lock.lock();
            if (--open_[slot] == 0)
                changed_.notify_all();
        }
    }

    void drainBands()
    {
        for (int64_t band = 0; band < pipeline_.bands; ++band) {
            const size_t slot = slotOf(band);
            std::unique_lock lock(mutex_);
            if (!wait(lock, [&] { return band < filled_ && open_[slot] == 0; }))
                return;
            lock.unlock();
            pipeline_.drain(band, static_cast<int>(slot));
            lock.lock();
            drained_ = band + 1;
            changed_.notify_all();
        }
    }

    const Pipeline& pipeline_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::exception_ptr failure_;
    std::vector<int> pieces_; ///< by slot
    std::vector<int> open_;   ///< by slot: pieces that are not done
    int64_t filled_ = 0, drained_ = 0;
    int64_t nextBand_ = 0; ///< the band and in it the piece to be taken next
    int nextPiece_ = 0;
};

} // namespace

void Pipeline::run() const
{
    Run(*this).all();
}

} // namespace host
