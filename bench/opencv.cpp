#include <bench/areas.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <utility>

namespace bench::opencv {

int typeOf(const Planes& planes)
{
    constexpr int types[] = {CV_8U, CV_16U, CV_32S, CV_32F, CV_16F};
    return types[planes.plane.formatCode];
}

/// The components of a pixel as so many columns; reshape() makes channels of them.
cv::Mat matrix(Planes& planes, void* data, int border = 0)
{
    return {planes.in.height() + 2 * border, (planes.in.width() + 2 * border) * planes.components(),
            typeOf(planes), data};
}

/// cv::LUT with a table made beforehand.
Work table(Planes& planes)
{
    cv::Mat codes(1, 256, CV_8U);
    for (int i = 0; i < 256; ++i)
        codes.at<uint8_t>(i) = encode<uint8_t>(gammaAdd(i / 255.0));
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output), codes]() mutable {
        cv::LUT(from, codes, to);
    };
}

/// cv::pow into the output, then cv::add in place.
Work power(Planes& planes)
{
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output)]() mutable {
        cv::pow(from, 1.0 / gammaValue, to);
        cv::add(to, addValue, to);
    };
}

/// cv::pow into the output, then scale and offset in place.
Work levels(Planes& planes)
{
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output)]() mutable {
        cv::pow(from, 1.0 / gammaValue, to);
        to.convertTo(to, -1, levelsLine().factor, levelsLine().addend);
    };
}

Work gamma(Planes& planes)
{
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output)]() mutable {
        cv::pow(from, 1.0 / gammaValue, to);
    };
}

/// A change of float pixels from one matrix to another. Halves are converted before and after.
template <class Change>
Work pixels(Planes& planes)
{
    const cv::Mat from = matrix(planes, planes.input).reshape(planes.components());
    cv::Mat to = matrix(planes, planes.output).reshape(planes.components());
    if (from.depth() == CV_32F)
        return [from, to, change = Change()]() mutable { change(from, to); };
    return [from, to, change = Change(), wideFrom = cv::Mat(), wideTo = cv::Mat()]() mutable {
        from.convertTo(wideFrom, CV_32F);
        wideTo.create(from.size(), wideFrom.type());
        change(wideFrom, wideTo);
        wideTo.convertTo(to, CV_16F);
    };
}

/// To hue, saturation, value and from there the saturation, into all channels.
struct Saturation
{
    cv::Mat hsv;
    void operator()(const cv::Mat& from, cv::Mat& to)
    {
        constexpr int channels[] = {1, 0, 1, 1, 1, 2};
        cv::cvtColor(from, hsv, cv::COLOR_RGB2HSV);
        cv::mixChannels(&hsv, 1, &to, 1, channels, 3);
    }
};

struct AdjustHSV
{
    cv::Mat hsv, changed;
    void operator()(const cv::Mat& from, cv::Mat& to)
    {
        cv::cvtColor(from, hsv, cv::COLOR_RGB2HSV);
        cv::transform(hsv, changed, cv::Matx34f(1, 0, 0, hueShift, 0, satScale, 0, 0, 0, 0, valScale, 0));
        cv::min(changed, cv::Scalar(1e9, 1.0, 1e9), changed); // saturation alone
        cv::cvtColor(changed, to, cv::COLOR_HSV2RGB);
    }
};

/// One pass for scale and offset, then the two limits in place.
Work scaleLimit(Planes& planes)
{
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output)]() mutable {
        from.convertTo(to, -1, multValue, addValue * multValue);
        cv::max(to, 0.0, to);
        cv::min(to, 1.0, to);
    };
}

/// Both 3 x 3 Sobel differences as `Depth`, their magnitudes and the sum. The input is the inside of a larger
/// matrix, so that the pixels around it are read as the library reads them.
template <int Depth>
Work sobel(Planes& planes)
{
    const cv::Mat whole = matrix(planes, planes.region.getImageData(0), 1);
    const cv::Mat inside = whole(cv::Rect(1, 1, planes.in.width(), planes.in.height()));
    return [inside, to = matrix(planes, planes.output), x = cv::Mat(), y = cv::Mat(), byteX = cv::Mat(),
            byteY = cv::Mat()]() mutable {
        cv::Sobel(inside, x, Depth, 1, 0);
        cv::Sobel(inside, y, Depth, 0, 1);
        if constexpr (Depth == CV_16S) {
            cv::convertScaleAbs(x, byteX);
            cv::convertScaleAbs(y, byteY);
            cv::add(byteX, byteY, to);
        } else {
            cv::absdiff(x, cv::Scalar::all(0), x);
            cv::absdiff(y, cv::Scalar::all(0), y);
            cv::add(x, y, to, cv::noArray(), to.depth());
        }
    };
}

cv::Mat matrix(const Planes& planes, TIL_Region& region)
{
    return {region.height(), region.width(), typeOf(planes), region.getImageData(0)};
}

/// The pixels that the library gives whole windows, from a larger matrix. Around them it goes along rows or down
/// columns alone: this is done once, for the comparison.
template <int Size>
Work dilate(Planes& planes)
{
    const int half = Size / 2, width = planes.in.width(), height = planes.in.height();
    const cv::Range columns(half, half + (width - 2 * half) / Size * Size);
    const cv::Range rows(half, half + (height - 2 * half) / Size * Size);
    return [=, from = matrix(planes, planes.input), to = matrix(planes, planes.output),
            square = cv::Mat::ones(Size, Size, CV_8U), first = true]() mutable {
        cv::dilate(from(rows, columns), to(rows, columns), square);
        if (!std::exchange(first, false))
            return;
        for (const cv::Range& ends : {cv::Range(0, rows.start), cv::Range(rows.end, height)})
            cv::dilate(from(ends, columns), to(ends, columns), cv::Mat::ones(1, Size, CV_8U));
        for (const cv::Range& ends : {cv::Range(0, columns.start), cv::Range(columns.end, width)})
            cv::dilate(from(rows, ends), to(rows, ends), cv::Mat::ones(Size, 1, CV_8U));
    };
}

/// A closing or opening by lines both ways and what becomes of the two; with anchors of its own, as
/// cv::morphologyEx moves the image where lines are even.
struct Lines
{
    cv::Mat first, along, down;

    template <class First, class Then>
    void operator()(const cv::Mat& from, First makeFirst, Then then)
    {
        constexpr int size = 6;
        for (cv::Mat* to : {&along, &down}) {
            const cv::Size line = to == &along ? cv::Size(size, 1) : cv::Size(1, size);
            const cv::Mat element = cv::Mat::ones(line, CV_8U);
            makeFirst(from, first, element, cv::Point(0, 0), 1, cv::BORDER_REPLICATE, cv::Scalar());
            then(first, *to, element, cv::Point(line.width - 1, line.height - 1), 1, cv::BORDER_REPLICATE,
                 cv::Scalar());
        }
    }
};

/// Over the whole region, so that nothing within the picture is made from what lies beyond the border.
Work degrain(Planes& planes)
{
    constexpr int border = 10;
    const auto around = planes.around({border, border, border, border});
    const cv::Rect inside(border, border, planes.in.width(), planes.in.height());
    return [around, from = matrix(planes, *around), to = matrix(planes, planes.output), inside,
            closed = cv::Mat(), lines = Lines()]() mutable {
        lines(from, cv::dilate, cv::erode);
        cv::min(lines.along, lines.down, closed);
        lines(closed, cv::erode, cv::dilate);
        cv::max(lines.along(inside), lines.down(inside), to);
    };
}

Work shift(Planes& planes)
{
    const auto around = planes.around({.right = 1, .top = 1});
    const cv::Matx23f map(1, 0, shiftX, 0, 1, shiftY);
    return [around, from = matrix(planes, *around), to = matrix(planes, planes.output), map]() mutable {
        cv::warpAffine(from, to, map, to.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
    };
}

/// By the mean of the areas.
template <const Sampling& Of>
Work reduce(Planes& planes)
{
    return [from = matrix(planes, planes.input),
            to = cv::Mat(Of.height, Of.width, CV_32F, planes.output)]() mutable {
        cv::resize(from, to, to.size(), 0, 0, cv::INTER_AREA);
    };
}

/// Between four pixels, whatever the footprint.
Work remap(Planes& planes)
{
    cv::Mat u(leaning.height, leaning.width, CV_32F), v(u.size(), CV_32F);
    for (int y = 0; y < leaning.height; ++y)
        for (int x = 0; x < leaning.width; ++x) {
            u.at<float>(y, x) = leaning.at(x, y).u - 0.5f;
            v.at<float>(y, x) = leaning.at(x, y).v - 0.5f;
        }
    return [from = matrix(planes, planes.input), to = cv::Mat(u.size(), CV_32F, planes.output), u,
            v]() mutable { cv::remap(from, to, u, v, cv::INTER_LINEAR, cv::BORDER_REPLICATE); };
}

/// From the output and the second picture into the output.
Work inPlace(Planes& planes, auto operation)
{
    return [to = matrix(planes, planes.output), from = matrix(planes, planes.second().pixels),
            operation]() mutable { operation(to, from); };
}

Work add(Planes& planes)
{
    return inPlace(planes, [](cv::Mat& to, const cv::Mat& from) { cv::add(to, from, to); });
}

Work min(Planes& planes)
{
    return inPlace(planes, [](cv::Mat& to, const cv::Mat& from) { cv::min(to, from, to); });
}

Work weighted(Planes& planes)
{
    return inPlace(planes, [](cv::Mat& to, const cv::Mat& from) {
        cv::addWeighted(to, mixWeight, from, 1.0f - mixWeight, 0.0, to);
    });
}

/// Integers by their complements, whose products stay in range.
Work screen(Planes& planes)
{
    return inPlace(planes, [part = cv::Mat()](cv::Mat& to, const cv::Mat& from) mutable {
        if (to.depth() == CV_32F) {
            cv::multiply(to, from, part);
            cv::add(to, from, to);
            cv::subtract(to, part, to);
        } else {
            cv::bitwise_not(from, part);
            cv::bitwise_not(to, to);
            cv::multiply(to, part, to, 1.0 / (to.depth() == CV_8U ? 255 : 65535));
            cv::bitwise_not(to, to);
        }
    });
}

/// With the mask's complement made each time; formats that cv::blendLinear does not take are converted.
Work masked(Planes& planes)
{
    const cv::Mat mask(planes.in.height(), planes.in.width(), CV_32F, planes.second().mask.getImageData(0));
    const cv::Mat to = matrix(planes, planes.output).reshape(4);
    const cv::Mat from = matrix(planes, planes.second().pixels).reshape(4);
    return [=, rest = cv::Mat(), wideTo = cv::Mat(), wideFrom = cv::Mat()]() mutable {
        cv::subtract(1.0, mask, rest);
        if (to.depth() == CV_8U || to.depth() == CV_32F) {
            cv::blendLinear(to, from, rest, mask, to);
            return;
        }
        to.convertTo(wideTo, CV_32F);
        from.convertTo(wideFrom, CV_32F);
        cv::blendLinear(wideTo, wideFrom, rest, mask, wideTo);
        wideTo.convertTo(to, to.depth());
    };
}

/// The largest value in an ellipse, without weights: the nearest that there is to a feather.
template <int Radius>
Work dilateEllipse(Planes& planes)
{
    const cv::Mat ellipse =
        cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(2 * Radius + 1, 2 * Radius + 1));
    return [from = matrix(planes, planes.input), to = matrix(planes, planes.output), ellipse]() mutable {
        cv::dilate(from, to, ellipse);
    };
}

const bool added = [] {
    cv::setNumThreads(1);
    return addPeers({
        {"gamma_add/uint8", "cv::LUT", table},
        {"gamma_add/float", "cv::pow, add", power},
        {"gamma/float", "cv::pow", gamma},
        {"levels/float", "cv::pow, convertTo", levels},
        {"saturation/float", "cv::cvtColor, mixChannels", pixels<Saturation>},
        {"saturation/half", "the same between convertTo", pixels<Saturation>},
        {"hsv_adjust/float", "cv::cvtColor, transform, min", pixels<AdjustHSV>},
        {"hsv_adjust/half", "the same between convertTo", pixels<AdjustHSV>},
        {"add_mult_limit/float", "cv::convertTo, max, min", scaleLimit},
        {"edge_detect/uint8", "cv::Sobel, abs, add", sobel<CV_16S>},
        {"edge_detect/uint16", "cv::Sobel, abs, add", sobel<CV_32F>},
        {"edge_detect/float", "cv::Sobel, abs, add", sobel<CV_32F>},
        {"dilate_3/uint8", "cv::dilate", dilate<3>},
        {"dilate_3/uint16", "cv::dilate", dilate<3>},
        {"dilate_3/float", "cv::dilate", dilate<3>},
        {"dilate_15/uint8", "cv::dilate", dilate<15>},
        {"dilate_15/uint16", "cv::dilate", dilate<15>},
        {"dilate_15/float", "cv::dilate", dilate<15>},
        {"dilate_61/uint8", "cv::dilate", dilate<61>},
        {"dilate_61/uint16", "cv::dilate", dilate<61>},
        {"dilate_61/float", "cv::dilate", dilate<61>},
        {"degrain/uint8", "cv::dilate, erode, min, max", degrain},
        {"degrain/uint16", "cv::dilate, erode, min, max", degrain},
        {"degrain/float", "cv::dilate, erode, min, max", degrain},
        {"shift/uint8", "cv::warpAffine", shift},
        {"shift/uint16", "cv::warpAffine", shift},
        {"shift/float", "cv::warpAffine", shift},
        {"reduce_4_box/float", "cv::resize INTER_AREA", reduce<quarter>, Agreement::none},
        {"reduce_37_box/float", "cv::resize INTER_AREA", reduce<by37>, Agreement::none},
        {"warp_box/float", "cv::remap INTER_LINEAR", remap, Agreement::none},
        {"feather_5/uint8", "cv::dilate", dilateEllipse<5>, Agreement::none},
        {"feather_5/float", "cv::dilate", dilateEllipse<5>, Agreement::none},
        {"feather_15/uint8", "cv::dilate", dilateEllipse<15>, Agreement::none},
        {"feather_15/float", "cv::dilate", dilateEllipse<15>, Agreement::none},
        {"screen/uint8", "cv::bitwise_not, multiply", screen},
        {"screen/uint16", "cv::bitwise_not, multiply", screen},
        {"screen/float", "cv::multiply, add, subtract", screen},
        {"add/uint8", "cv::add", add},
        {"add/uint16", "cv::add", add},
        {"add/float", "cv::add", add},
        {"min/uint8", "cv::min", min},
        {"min/uint16", "cv::min", min},
        {"min/float", "cv::min", min},
        {"blend_mask/uint8", "cv::blendLinear", masked},
        {"blend_mask/uint16", "cv::blendLinear", masked},
        {"blend_mask/half", "cv::blendLinear", masked},
        {"blend_mask/float", "cv::blendLinear", masked, Agreement::none}, // adds 1e-5 to the weights' sum
        {"blend/uint8", "cv::addWeighted", weighted},
        {"blend/uint16", "cv::addWeighted", weighted},
        {"blend/float", "cv::addWeighted", weighted},
    });
}();

} // namespace bench::opencv
