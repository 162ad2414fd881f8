#pragma once

#include <host/chain/Functions.h>
#include <host/operation/Planes.h>

#include <array>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace host {

/// Something that an operation takes: an image, or an argument.
struct Parameter
{
    std::string name; ///< "FG": by its place; "--gain": by its name
    std::string help;
    Argument argument = {}; ///< what the text of it may be; an image's is the name of a file or a node
    bool isImage = false;
    bool required = false;
    std::string preset = {};     ///< the text without it; empty: none
    const char* words = nullptr; ///< what help calls its words: "N", "WA WB"; null: its name
    const char* id = nullptr;    ///< its key where the name would not do
    std::vector<const char*> needs = {}, excludes = {}; ///< names
    bool settlesAlpha = false; ///< a switch: what comes out is stored as it is, whatever the file's alpha
    bool shared = false;       ///< by all operations on images: documents tell of it once

    bool isOption() const { return name.starts_with("--"); }
    bool isText() const { return isImage || argument.type == Argument::Type::Text; }
    bool isSwitch() const { return argument.type == Argument::Type::Switch; }
    bool takesSeveral() const { return words != nullptr && std::strchr(words, ' ') != nullptr; }
    /// "fg", "gain": as JSON has it.
    std::string key() const;
};

class Call;

/// Something that makes a picture of pictures: what people call it, what it takes, and how its node is made.
struct Operation
{
    std::string name;
    std::string summary;
    std::string examples; ///< and what else help says at its end
    std::vector<Parameter> parameters;
    std::function<std::unique_ptr<Node>(const Call&)> make;
    std::vector<std::string> (*list)() = nullptr; ///< what `--list` tells of, a line each
    bool moves = false;                           ///< its picture depends on the frame, whatever its inputs
    bool usualDepth = false; ///< a command without --depth takes the one that is usual for the output's file

    const Parameter* find(const std::string& key) const;
};

/// Every operation there is. A new one is a new row here: its command, its line in a script, JSON, the lists
/// and their documents follow.
const std::vector<Operation>& operations();

/// The operation of a name; throws a usage error for an unknown one.
const Operation& operationOfName(const std::string& name);

/// An operation with what it was given.
class Call
{
public:
    explicit Call(const Operation& of);

    /// Sets a parameter from its words; throws a usage error where they are none.
    void set(const Parameter& parameter, const std::vector<std::string>& words);

    /// Throws a usage error unless everything required is there, and what goes together.
    void check() const;

    const Operation& operation() const { return *operation_; }
    bool has(const std::string& key) const { return texts_.contains(key); }
    /// Of an argument that is no text; none where it is neither given nor preset.
    const Value& value(const std::string& key) const { return values_.at(key); }
    /// Of an argument that is a text; the preset where it is not given.
    std::string text(const std::string& key) const;
    bool isOn(const std::string& key) const { return has(key) && value(key).isOn(); }

    /// The images in the order of the parameters, those that are given.
    std::vector<std::string> images() const;

    PlaneSettings planeSettings() const;
    /// Whether it is told to take alpha as it stands.
    bool takesAlphaAsIs() const;
    /// Whether its result is to be stored with alpha as it stands.
    bool storesAlphaAsIs() const;

    std::unique_ptr<Node> node() const { return operation_->make(*this); }

    /// The same operation for a frame of a sequence.
    Call at(std::optional<int64_t> frame) const;
    /// The number of the frame, 1 for a still.
    int64_t frame() const { return frame_; }

    /// The same operation, which stores in the wider of the inputs' formats and its depth.
    Call widened() const;

private:
    const Operation* operation_;
    bool widens_ = false;
    int64_t frame_ = 1;
    std::map<std::string, std::string> texts_; ///< by key
    std::map<std::string, Value> values_;
};

/// The letter of a component as its number.
std::optional<int> componentOf(const Call& call, const std::string& key);

/// A whole number; throws a usage error for anything else.
unsigned int readWhole(const std::string& option, const std::string& text, unsigned int least,
                       unsigned int most);

/// The width and height of "1920x1080"; throws a usage error for anything else.
std::pair<int, int> readSize(const std::string& option, const std::string& text, unsigned int most = 1000000);

/// The place of a text among the choices of its parameter; throws a usage error for another one.
size_t choiceOf(const Call& call, const std::string& key);

/// Two numbers with a comma between them, or one for both; throws a usage error for anything else.
std::array<double, 2> readPair(const std::string& option, const std::string& text);

/// As many numbers as `out` has room for, with commas between them; throws a usage error for anything else.
void readNumbers(const std::string& option, const std::string& text, std::span<double> out);

} // namespace host
