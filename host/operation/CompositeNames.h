#pragma once

#include <RU/composite/RU_Composite.h>

#include <string>
#include <vector>

namespace host {

/// A compositing operation as people name it.
struct CompositeName
{
    RU_CompositeType type;
    const char* name;
    const char* formula;
};
const std::vector<CompositeName>& compositeNames();

/// The operation of a name or a number; throws a usage error for anything else.
RU_CompositeType compositeOfName(const std::string& text);

} // namespace host
