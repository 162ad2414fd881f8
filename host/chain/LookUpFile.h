#pragma once

#include <CL/CL_Clip.h>
#include <PXL/PXL_Lookup.h>

#include <memory>
#include <string>

namespace host {

/// What a look-up file says: a function for all components, or one each for red, green and blue. Linear in
/// between, the end values outside.
struct LookUp
{
    int channels = 0;
    std::unique_ptr<PXL_Lookup> table; ///< where values are at even distances
    std::unique_ptr<CL_Clip> clip;     ///< where they are not
};

/// Reads a file by its extension; throws a usage error that names the file and the line.
///
/// .cube: a table of LUT_1D_SIZE rows of red, green and blue, over DOMAIN_MIN to DOMAIN_MAX or
/// LUT_1D_INPUT_RANGE, 0 to 1 without. 3-D cubes are refused.
///
/// .csv: a column of values over 0 to 1; or x and y; or x, red, green and blue. x grows from row to row.
/// Columns are parted by semicolons, or else by commas, or else by blanks; a line of names may come first,
/// and what follows # in a line is left out.
LookUp readLookUpFile(const std::string& path);

} // namespace host
