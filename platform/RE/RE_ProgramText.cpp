#include <RE/RE_ProgramText.h>

#include <RE/re_Collector.h>
#include <RE/re_Join.h>
#include <RE/re_ShaderText.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace {

bool hasWord(std::string_view text, std::string_view word)
{
    for (size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
        const size_t end = at + word.size();
        if ((at == 0 || !re_isWordCharacter(text[at - 1])) &&
            (end == text.size() || !re_isWordCharacter(text[end])))
            return true;
    }
    return false;
}

/// The shortest that reads back as the same value.
std::string numberText(float value)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "(0.0 / 0.0)" : value > 0.0f ? "(1.0 / 0.0)" : "(-1.0 / 0.0)";
    std::array<char, 32> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size() - 1, value);
    const std::string text(digits.data());
    return text.find_first_of(".e") == text.npos ? text + ".0" : text;
}

std::string numberText(int32_t value)
{
    return std::to_string(value);
}

/// What a constant begins with: "1.0", "VEC2[](VEC2(1.0, 2.0), VEC2(3.0, 4.0))". `newLine` stands before a line of
/// a long one.
std::string initialiser(const re_Constant& constant, std::string_view newLine)
{
    constexpr size_t perLine = 8;
    const std::string declared = constant.declaration(), type = declared.substr(0, declared.find(' '));
    const auto list = [&](const auto& numbers) {
        const size_t each = numbers.size() / static_cast<size_t>(std::max(constant.count, 1));
        std::string text = constant.count > 1 ? type + "[](" : "";
        for (size_t at = 0; at < numbers.size(); ++at) {
            const bool begins = at % each == 0, ends = at % each == each - 1;
            text += at == 0 ? "" : at % perLine == 0 && begins ? re_join(",\n", newLine) : ", ";
            text += re_join(begins && each > 1 ? type + "(" : "", numberText(numbers[at]),
                            ends && each > 1 ? ")" : "");
        }
        return text + (constant.count > 1 ? ")" : "");
    };
    return constant.floats.empty() ? list(constant.integers) : list(constant.floats);
}

/// The helpers that a text calls; several texts may stand in one shader.
std::string helpersOf(std::string_view text)
{
    const std::string_view all = re_shaderHelpers();
    const size_t mixes = all.find("\n//");
    const auto once = [](std::string_view name, std::string_view helpers) {
        return re_join("#ifndef ", name, "\n#define ", name, "\n", helpers, "\n#endif\n");
    };
    return re_join(text.find("RE_splat") != text.npos ? once("RE_SPLAT", all.substr(0, mixes)) : "",
                   hasWord(text, "mix") ? once("RE_MIX", all.substr(mixes)) : "", "\n");
}

/// What a text declares outside of functions, by its name there and one that begins with `prefix`.
std::map<std::string, std::string> renamed(const std::string& text, const std::string& prefix)
{
    static const std::regex declaration(
        "(?:(?:precise|uniform|const) )*(?:FLOAT|INT|void|I?VEC[234]|MATRIX[234]) (\\w+) ?[(;=\\[].*");
    std::map<std::string, std::string> names;
    std::istringstream lines(text);
    std::smatch found;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, found, declaration) && found.str(1) != prefix &&
            !found.str(1).starts_with("RE_"))
            names[found[1]] = re_join(prefix, "_", found.str(1));
    return names;
}

/// " // of function3" behind what a text's function number 3 declares, whose name ends in that number.
std::string userOf(std::string_view text, std::string_view name)
{
    for (size_t at = name.find_last_not_of("0123456789") + 1; at < name.size(); ++at)
        if (const std::string function = re_join("function", name.substr(at)); hasWord(text, function))
            return " // of " + function;
    return "";
}

/// GLSL's own words for the macros, names that begin with `prefix`, and no directives that number lines.
std::string plain(const std::string& text, const std::string& prefix)
{
    std::map<std::string, std::string> words = renamed(text, prefix);
    std::istringstream macros(re_shaderTypes());
    for (std::string line; std::getline(macros, line);) {
        std::istringstream parts(line);
        std::string define, name, value, more;
        if (parts >> define >> name >> value && !(parts >> more))
            words[name] = value;
        else if (text.find(name.substr(0, name.find('('))) != std::string::npos)
            words[""] += line + "\n";
    }
    std::string result = words[""];
    std::istringstream lines(text);
    bool wasEmpty = true;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("#line ") || (line.empty() && wasEmpty))
            continue;
        wasEmpty = line.empty();
        for (size_t at = 0; at < line.size();) {
            const auto end = std::find_if_not(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(),
                                              re_isWordCharacter);
            const std::string word(line.begin() + static_cast<std::ptrdiff_t>(at), end);
            const auto known = words.find(word);
            result += word.empty() ? std::string(1, line[at]) : known != words.end() ? known->second : word;
            at += std::max<size_t>(1, word.size());
        }
        result += "\n";
    }
    return result;
}

class ProgramText : public re_Collector
{
public:
    ProgramText(UT_String& program, const char* function) : program_(program), function_(function) {}

    bool setProgram(const char*, const char* text, bool normalize) override
    {
        program_ =
            UT_String(function_ != nullptr ? function(text, normalize)
                                           : remarks(normalize) + re_program(declared_, text, normalize));
        return false;
    }
    bool compute(UT_String& error, bool) override
    {
        error = "nothing to run it on";
        return false;
    }
    bool getResults() override { return false; }

private:
    std::string function(const char* text, bool normalize) const
    {
        const re_ShaderText cut(text);
        const std::string body = cut.outside + cut.statements;
        std::string program = helpersOf(body);
        for (const re_Constant& constant : declared_.constants)
            if (hasWord(body, constant.name))
                program += re_join("uniform ", constant.declaration(), " = ", initialiser(constant, "    "),
                                   ";", userOf(body, constant.name), "\n");
        for (size_t i = 0; i < declared_.inputs.size(); ++i)
            program += constantArray(i, body, normalize);
        return plain(re_join(program, cut.outside, "\nVEC4 ", function_, "(VEC4 value)\n{\n", cut.statements,
                             "    return value;\n}\n"),
                     function_);
    }

    re_Constant valuesOf(size_t input, bool normalize) const
    {
        const re_Array& array = declared_.inputs[input];
        return re_makeConstant(array.name.c_str(), array.type, array.vectorSize, inputs_[input].data(),
                               static_cast<int>(array.width * array.height), normalize);
    }

    /// An input whose values stand in the program.
    std::string constantArray(size_t input, std::string_view user, bool normalize) const
    {
        const re_Array& array = declared_.inputs[input];
        const re_Constant values = valuesOf(input, normalize);
        const std::string width = std::to_string(array.width), height = std::to_string(array.height),
                          declared = values.declaration(), type = declared.substr(0, declared.find(' '));
        return re_join("\nconst ", declared, " =", userOf(user, array.name), "\n    ",
                       initialiser(values, "    "), ";\n", "const IVEC2 SIZE_", array.name, " = IVEC2(",
                       width, ", ", height, ");\n", type, " ABS_", array.name,
                       "(INT x, INT y)\n{\n    return ", array.name, "[clamp(y, 0, ", height, " - 1) * ",
                       width, " + clamp(x, 0, ", width, " - 1)];\n}\n");
    }

    /// What an application has to know that runs the compute shader.
    std::string remarks(bool normalize) const
    {
        std::string text = "// Uniforms:\n//   RE_width, RE_count: the pixels of a row and of all rows\n";
        for (const re_Constant& constant : declared_.constants)
            text += re_join("//   ", constant.name, ": ", initialiser(constant, "//     "), "\n");
        for (const re_Array& input : declared_.inputs)
            text +=
                re_join("//   RE_size_", input.name, ": columns and rows of the input ", input.name, "\n");
        text += "// Storage buffers, of whole words, low bits first:\n";
        for (size_t i = 0; i < declared_.inputs.size() + declared_.outputs.size(); ++i) {
            const bool isInput = i < declared_.inputs.size();
            const re_Array& array =
                isInput ? declared_.inputs[i] : declared_.outputs[i - declared_.inputs.size()];
            const re_Layout layout(array.type);
            text += re_join("//   ", std::to_string(i), ": ", isInput ? "input " : "output ", array.name,
                            ", ", std::to_string(layout.bits), " bits, ", std::to_string(layout.perWord()),
                            " to a word");
            const bool isPicture = !isInput || array.width * array.height <= 1;
            text += isPicture
                        ? "\n"
                        : re_join("; ", std::to_string(array.width), " x ", std::to_string(array.height),
                                  ": ", initialiser(valuesOf(i, normalize), "//     "), "\n");
        }
        return re_join(text, "// Groups: RE_count / ",
                       std::to_string(re_groupSize * declared_.pixelsPerInvocation()),
                       ", rounded up: at most 65535 in x, and as many in y as that takes\n");
    }

    UT_String& program_;
    const char* function_;
};

} // namespace

std::unique_ptr<RE_OGLComputeGPU> REmakeProgramText(UT_String& program, const char* function)
{
    return std::make_unique<ProgramText>(program, function);
}
