#include <host/operation/CompositeNames.h>

#include <host/text/Names.h>

namespace host {

const std::vector<CompositeName>& compositeNames()
{
    static const std::vector<CompositeName> names = {
#define HOST_ROW(TYPE, NAME, FORMULA, ...) {RU_COMP_##TYPE, NAME, #FORMULA},
        RU_FOR_EACH_COMPOSITE_TYPE(HOST_ROW)
#undef HOST_ROW
    };
    return names;
}

RU_CompositeType compositeOfName(const std::string& text)
{
    std::vector<std::string> known;
    for (const CompositeName& entry : compositeNames()) {
        if (text == entry.name || text == std::to_string(entry.type))
            return entry.type;
        known.emplace_back(entry.name);
    }
    refuseName("unknown operation", text, known);
}

} // namespace host
