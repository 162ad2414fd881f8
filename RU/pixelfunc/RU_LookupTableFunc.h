#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

class PXL_Lookup;
struct ru_Lookup;

/// The value that a look-up table has at v: component c in channel c modulo their number, linear between the
/// samples, the end samples outside the table's domain, the first one for NaN.
///
/// Null: 0 everywhere.
/// Ownership: the table stays the caller's and must outlive the function.
class RU_API RU_LookupTableFunc : public RU_PixelFunction
{
public:
    explicit RU_LookupTableFunc(PXL_Lookup* table) : table_(table) {}

    /// More than one channel.
    bool eachComponentDifferent() const override;
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Lookup expression(int component) const; ///< the arithmetic for one component

    PXL_Lookup* table_;
};
