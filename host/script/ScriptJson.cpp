#include <host/script/ScriptText.h>

#include <host/chain/Values.h>
#include <host/file/Format.h>
#include <host/script/ScriptWords.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

namespace host {

namespace {

/// Reads the objects of a script in JSON.
class JsonReader
{
public:
    JsonReader(const std::string& source, const ScriptValues& values) : source_(source), values_(values) {}

    Script read(const Json& root, const std::string& output)
    {
        if (!root.is_object() || !root.contains("statements"))
            refuse(source_ + ": expected an object with a list under \"statements\"");
        for (const auto& [key, list] : root.items())
            if (key != "statements" && key != "outputs")
                refuseName(source_ + ": unknown key", key, {"statements", "outputs"});
            else if (!list.is_array())
                refuse(source_ + ": expected a list under \"" + key + "\"");
        each(root["statements"], "statements", [this](const Json& item) { statement(item); });
        if (root.contains("outputs"))
            each(root["outputs"], "outputs", [this](const Json& item) { this->output(item); });
        if (!output.empty() && !script_.outputs.empty())
            refuse(source_ + ": there are outputs; leave out -o");
        if (!output.empty() && !script_.statements.empty()) {
            Script::Output& last = script_.outputs.emplace_back();
            last.image = script_.statements.back().name;
            last.settings.path = output;
        }
        if (script_.outputs.empty())
            refuse(source_ + ": nothing is written; name a file under \"outputs\" or with -o");
        return std::move(script_);
    }

private:
    template <class Work>
    void each(const Json& list, const char* what, Work work)
    {
        for (size_t i = 0; i < list.size(); ++i) {
            where_ = source_ + ": " + what + ": " + entryText(i);
            try {
                if (!list[i].is_object())
                    refuse("expected an object instead of " + list[i].dump());
                work(list[i]);
            } catch (const Error& error) {
                throw Error(error.kind(), where_ + error.what());
            }
        }
    }

    std::string textAt(const Json& item, const char* key, bool required = true) const
    {
        if (!item.contains(key) && !required)
            return {};
        if (!item.contains(key) || !item[key].is_string())
            refuse(std::string("expected a text under \"") + key + "\"");
        return withValues(item[key].get<std::string>(), "", values_);
    }

    std::vector<std::string> wordsOf(const Json& value) const
    {
        if (value.is_string())
            return {withValues(value.get<std::string>(), "", values_)};
        if (!value.is_array())
            return {textOfJson(value)};
        std::vector<std::string> words;
        for (const Json& item : value)
            words.push_back(item.is_string() ? withValues(item.get<std::string>(), "", values_)
                                             : textOfJson(item));
        return words;
    }

    void statement(const Json& item)
    {
        const Operation& operation = operationOfName(textAt(item, "operation"));
        Call call(operation);
        for (const auto& [key, value] : item.items()) {
            if (key == "operation" || key == "name")
                continue;
            const Parameter* const parameter = operation.find(key);
            if (parameter == nullptr) {
                std::vector<std::string> known;
                for (const Parameter& candidate : operation.parameters)
                    known.push_back(candidate.key());
                refuseName(operation.name + ": unknown parameter", key, known);
            }
            const bool isOff = parameter->isSwitch() && value.is_boolean() && !value.get<bool>();
            if (!value.is_null() && !isOff)
                call.set(*parameter, wordsOf(value));
        }
        call.check();
        std::string name = textAt(item, "name", false);
        if (name.empty())
            name = script_.nextName();
        script_.statements.push_back({name, std::move(call), where_});
    }

    void output(const Json& item)
    {
        for (const auto& [key, value] : item.items())
            if (const std::vector<std::string> known{"image", "file", "depth", "window", "alpha"};
                std::find(known.begin(), known.end(), key) == known.end())
                refuseName("unknown key", key, known);
        const auto textOr = [&](const char* key, const char* preset) {
            return item.contains(key) ? textAt(item, key) : preset;
        };
        Script::Output& added = script_.outputs.emplace_back();
        added.image = textAt(item, "image");
        added.settings.path = textAt(item, "file");
        added.where = where_;
        setOutput(added.settings,
                  item.contains("depth") ? std::optional(textAt(item, "depth")) : std::nullopt,
                  textOr("window", "display"), textOr("alpha", "auto"));
    }

    std::string source_;
    const ScriptValues& values_;
    std::string where_;
    Script script_;
};

/// A text that reads back with every $ in it.
std::string escaped(const std::string& text)
{
    return joined(splitText(text, '$'), "$$");
}

Json textSchema(const std::string& help)
{
    return {{"type", "string"}, {"description", help}};
}

Json parameterSchema(const Parameter& parameter)
{
    using Type = Argument::Type;
    Json schema = {{"description", parameter.help}};
    if (!parameter.argument.choices.empty())
        schema["examples"] = parameter.argument.choices;
    if (parameter.isText())
        schema["type"] = "string";
    else if (parameter.isSwitch())
        schema["type"] = "boolean";
    else if (parameter.argument.type == Type::Number || parameter.argument.type == Type::OptionalNumber)
        schema["type"] = "number";
    else
        schema.update({{"type", "array"}, {"items", {{"type", "number"}}}});
    return schema;
}

Json operationSchema(const Operation& operation)
{
    Json properties = {{"name", textSchema("what later statements and outputs call it")},
                       {"operation", {{"const", operation.name}, {"description", operation.summary}}}};
    Json needed = {"operation"};
    for (const Parameter& parameter : operation.parameters) {
        properties[parameter.key()] = parameterSchema(parameter);
        if (parameter.required)
            needed.push_back(parameter.key());
    }
    return {{"type", "object"},
            {"properties", properties},
            {"required", needed},
            {"additionalProperties", false}};
}

} // namespace

Script readScriptJson(const std::string& text, const std::string& source, const ScriptValues& values,
                      const std::string& output)
{
    try {
        return JsonReader(source, values).read(parseStrictJson(text), output);
    } catch (const Json::exception& error) {
        refuse(source + ": " + error.what());
    }
}

std::string scriptJson(const Script& script)
{
    Json statements = Json::array(), outputs = Json::array();
    for (const auto& [name, call, where] : script.statements) {
        Json item = {{"name", name}, {"operation", call.operation().name}};
        for (const Parameter& parameter : call.operation().parameters)
            if (call.has(parameter.key()))
                item[parameter.key()] = parameter.isText()
                                            ? Json(escaped(call.text(parameter.key())))
                                            : valueJson(parameter.argument, call.value(parameter.key()));
        statements.push_back(item);
    }
    for (const auto& [image, settings, where] : script.outputs) {
        Json item = {{"image", escaped(image)}, {"file", escaped(settings.path)}};
        if (settings.depth)
            item["depth"] = formatName(*settings.depth);
        if (settings.dataWindow)
            item["window"] = "data";
        if (settings.asIs)
            item["alpha"] = "as-is";
        outputs.push_back(item);
    }
    const Json root = {{"statements", statements}, {"outputs", outputs}};
    return root.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string scriptSchema()
{
    Json statements = Json::array();
    for (const Operation& operation : operations())
        statements.push_back(operationSchema(operation));
    const Json output = {{"type", "object"},
                         {"properties",
                          {{"image", textSchema("the name of a statement, or a file")},
                           {"file", textSchema("file to write")},
                           {"depth", textSchema("uint8, uint16, uint32, half or float")},
                           {"window", {{"enum", {"display", "data"}}}},
                           {"alpha", {{"enum", {"auto", "as-is"}}}}}},
                         {"required", {"image", "file"}},
                         {"additionalProperties", false}};
    const Json root = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                       {"title", "A script of kreiluge"},
                       {"type", "object"},
                       {"properties",
                        {{"statements", {{"type", "array"}, {"items", {{"oneOf", statements}}}}},
                         {"outputs", {{"type", "array"}, {"items", output}}}}},
                       {"required", {"statements"}},
                       {"additionalProperties", false}};
    return root.dump(2);
}

} // namespace host
