#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>
#include <RU/pixelfunc/ru_LineRows.h>

#include <vector>

/// What functions of single values do to one component, as passes over rows. The first pass reads the input
/// and writes the output, the others go over the output, piece by piece while it is in the nearest cache.
/// Lines that follow each other or a power make one pass together. Powers are borrowed from their functions.
class ru_RowSteps
{
public:
    /// Unless the component is outside its scope.
    void add(RU_PixelFunction& function, int component);

    void add(const ru_Line& line);
    void add(const ru_Scale& scale);
    void add(const ru_Gamma& gamma);
    void add(const ru_Power& power);

    bool empty() const { return steps_.empty(); }
    /// There is nothing but lines, which take no longer than a table of their results.
    bool onlyLines() const;

    /// `in` and `out` are the same row or apart.
    void run(const float* in, float* out, int64_t count) const;

private:
    struct Step
    {
        void (*run)(const Step& step, const ru_Lines& lines, const float* in, float* out, int64_t count);
        bool takesLines;
        int64_t linesEnd;                      ///< those from the end of the step before
        const ru_Exponent* exponent = nullptr; ///< of powers
        RU_PixelFunction* function = nullptr;  ///< these of any others
        RU_RowForm form = {};
        int component = 0;
    };

    static void runLines(const Step&, const ru_Lines& lines, const float* in, float* out, int64_t count);
    template <class Power>
    static void runPower(const Step& step, const ru_Lines& lines, const float* in, float* out, int64_t count);
    static void runForm(const Step& step, const ru_Lines&, const float* in, float* out, int64_t count);
    int64_t lineCount() const { return static_cast<int64_t>(lines_.size()); }

    std::vector<Step> steps_;
    std::vector<ru_Line> lines_;
};

/// The same for the four components.
struct ru_ComponentSteps
{
    void add(RU_PixelFunction& function);
    /// Rows of components; null where they are absent.
    void run(const float* const* in, float* const* out, int64_t count) const;

    /// There is nothing, or nothing but lines, for any component.
    bool empty() const;
    bool onlyLines() const;

    ru_RowSteps of[4];
    bool alike = true; ///< all components are treated alike
};

/// A chain over rows of pixels: functions of single values component by component, the others in between.
class ru_PixelSteps
{
public:
    void add(RU_PixelFunction& function);

    void run(const float* const* in, float* const* out, int64_t count) const;

    /// What comes before the first function that looks at several components, and the rest of the chain.
    const ru_ComponentSteps& leading() const { return leading_; }
    void runRest(const float* const* in, float* const* out, int64_t count) const;

private:
    struct Step
    {
        RU_PixelFunction* function;
        RU_VectorRowForm form;
        ru_ComponentSteps following; ///< up to the next such step
    };

    ru_ComponentSteps leading_;
    std::vector<Step> rest_;
};
