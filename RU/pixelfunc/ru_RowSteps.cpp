#include <RU/pixelfunc/ru_RowSteps.h>

#include <RU/pixelfunc/ru_ChainRows.h>
#include <RU/pixelfunc/ru_FunctionForms.h>

void ru_RowSteps::add(RU_PixelFunction& function, int component)
{
    if (!function.isScoped(component))
        return;
    const RU_RowForm form = function.getRowFunction();
    if (form.addSteps != nullptr)
        form.addSteps(function, component, *this);
    else
        steps_.push_back({runForm, false, lineCount(), nullptr, &function, form, component});
}

namespace {

/// Makes one line of two where nothing of the second comes before anything of the first, and rounds as both.
bool join(ru_Line& first, const ru_Line& second)
{
    if (first.limits() || second.multiplies() || (first.adds() && second.adds()))
        return false;
    const ru_Line before = first;
    first = second;
    first.mult = before.mult;
    first.add = before.adds() ? before.add : second.add;
    return true;
}

} // namespace

void ru_RowSteps::add(const ru_Line& line)
{
    if (steps_.empty() || !steps_.back().takesLines)
        steps_.push_back({runLines, true, lineCount()});
    const int64_t linesBefore = steps_.size() > 1 ? steps_[steps_.size() - 2].linesEnd : 0;
    if (lineCount() == linesBefore || !join(lines_.back(), line))
        lines_.push_back(line);
    steps_.back().linesEnd = lineCount();
}

void ru_RowSteps::add(const ru_Scale& scale)
{
    for (const ru_Line& line : scale.lines)
        add(line);
}

bool ru_RowSteps::onlyLines() const
{
    return steps_.empty() || (steps_.size() == 1 && steps_[0].run == runLines);
}

void ru_RowSteps::runLines(const Step&, const ru_Lines& lines, const float* in, float* out, int64_t count)
{
    ru_runRow(lines, in, out, count);
}

template <class Power>
void ru_RowSteps::runPower(const Step& step, const ru_Lines& lines, const float* in, float* out,
                           int64_t count)
{
    ru_runRow(ru_LinesAfter<Power>{{step.exponent}, lines}, in, out, count);
}

void ru_RowSteps::add(const ru_Gamma& gamma)
{
    steps_.push_back({runPower<ru_Gamma>, true, lineCount(), gamma.exponent});
}

void ru_RowSteps::add(const ru_Power& power)
{
    steps_.push_back({runPower<ru_Power>, true, lineCount(), power.exponent});
}

void ru_RowSteps::runForm(const Step& step, const ru_Lines&, const float* in, float* out, int64_t count)
{
    step.form.run(step.function, in, out, count, step.component);
}

void ru_RowSteps::run(const float* in, float* out, int64_t count) const
{
    if (steps_.empty())
        return ru_copyRow(in, out, count);
    const int64_t piece = steps_.size() > 1 ? ru_chunk : count;
    for (int64_t start = 0; start < count; start += piece) {
        const int64_t length = std::min(piece, count - start);
        const float* from = in + start;
        int64_t line = 0;
        for (const Step& step : steps_) {
            step.run(step, {lines_.data() + line, step.linesEnd - line}, from, out + start, length);
            line = step.linesEnd;
            from = out + start;
        }
    }
}

void ru_ComponentSteps::add(RU_PixelFunction& function)
{
    // A function that says it needs all components may take single ones and treat them differently.
    alike = alike &&
            !(function.eachComponentDifferent() || function.needAllComponents() || function.isPartialScope());
    for (int c = 0; c < 4; ++c)
        of[c].add(function, c);
}

bool ru_ComponentSteps::empty() const
{
    return std::all_of(of, of + 4, [](const ru_RowSteps& steps) { return steps.empty(); });
}

bool ru_ComponentSteps::onlyLines() const
{
    return std::all_of(of, of + 4, [](const ru_RowSteps& steps) { return steps.onlyLines(); });
}

void ru_ComponentSteps::run(const float* const* in, float* const* out, int64_t count) const
{
    for (int c = 0; c < 4; ++c)
        if (in[c] != nullptr)
            of[c].run(in[c], out[c], count);
}

void ru_PixelSteps::add(RU_PixelFunction& function)
{
    if (!function.takesSingleValues())
        rest_.push_back({&function, function.getVectorRowFunction(), {}});
    else if (rest_.empty())
        leading_.add(function);
    else
        rest_.back().following.add(function);
}

void ru_PixelSteps::run(const float* const* in, float* const* out, int64_t count) const
{
    const bool leads = !leading_.empty();
    if (leads || rest_.empty())
        leading_.run(in, out, count);
    runRest(leads ? out : in, out, count);
}

void ru_PixelSteps::runRest(const float* const* in, float* const* out, int64_t count) const
{
    for (const Step& step : rest_) {
        step.form(step.function, in, out, count, step.function->getScope());
        step.following.run(out, out, count);
        in = out;
    }
}
