#pragma once

#include <host/chain/Functions.h>
#include <host/chain/StrictJson.h>

#include <string>
#include <utility>
#include <vector>

// What the lists of operations and functions share.

namespace tool {

/// How something is written, and what it is.
using Rows = std::vector<std::pair<std::string, std::string>>;

/// In two columns; what is too long for the first has a line of its own.
void printRows(const Rows& rows);

/// As a table for documents.
void printMarkdown(const std::string& written, const std::string& meaning, const Rows& rows);

host::Json argumentJson(const host::Argument& argument, const host::Json& preset);

template <class Row>
host::Json listJson(const std::vector<Row>& rows, host::Json (*json)(const Row&))
{
    host::Json list = host::Json::array();
    for (const Row& row : rows)
        list.push_back(json(row));
    return list;
}

void printJson(const host::Json& json);

} // namespace tool
