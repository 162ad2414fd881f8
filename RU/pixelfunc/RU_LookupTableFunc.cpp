#include <RU/pixelfunc/RU_LookupTableFunc.h>

#include <PXL/PXL_Lookup.h>
#include <RU/pixelfunc/ru_FunctionForms.h>

#include <string>

RU_FUNCTION_FORMS(RU_LookupTableFunc)

bool RU_LookupTableFunc::eachComponentDifferent() const
{
    return table_ != nullptr && table_->channels() > 1;
}

ru_Lookup RU_LookupTableFunc::expression(int component) const
{
    if (table_ == nullptr)
        return {};
    return {table_->channel(component % table_->channels())};
}

void RU_LookupTableFunc::getPixelShader(UT_String& body)
{
    if (table_ == nullptr) {
        body = "value = VEC4(0.0f);\n";
        return;
    }
    const PXL_LookupChannel channel = table_->channel(0);
    const std::string index = std::to_string(getFunctionIndex());
    const auto start = static_cast<float>(channel.start);
    const auto scale = static_cast<float>(channel.scale);
    const auto last = static_cast<float>(channel.last);
    addConstant("start", RE_GPU_FLOAT32, 1, &start, 1);
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale, 1);
    addConstant("last", RE_GPU_FLOAT32, 1, &last, 1);
    addArray(("lookup" + index).c_str(), RE_GPU_FLOAT32, 1, channel.last + 1, table_->channels(),
             table_->data());

    body = "VEC4 place = clamp((value - VEC4(start)) * VEC4(scale), VEC4(0.0f), VEC4(last));\n"
           "VEC4 below = floor(place);\n"
           "VEC4 above = min(below + VEC4(1.0f), VEC4(last));\n";
    for (int c = 0; c < 4; ++c) {
        UT_String line("value.%c = mix(ABS_lookup%n(INT(below.%c), %y), ABS_lookup%n(INT(above.%c), %y),"
                       " place.%c - below.%c);\n");
        line.substitute("%c", std::string_view("rgba").substr(static_cast<size_t>(c), 1));
        line.substitute("%n", index);
        line.substitute("%y", std::to_string(c % table_->channels()));
        body.append(line.view());
    }
}
