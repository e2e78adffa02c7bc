// Decimal operands: any bytes as packed and zoned items of any length, through arithmetic,
// comparisons, copies, shifts and conversions. All items end where their blocks end.
#include <vector>

#include "decimal/mode.h"
#include "fuzz.h"
#include "kvr2/decimal.h"
#include "kvr2/decimal_conversions.h"
#include "kvr2/decimal_scaling.h"

namespace {

using Block = std::vector<uint8_t>;

struct Items {
    int32_t an, bn, dn;
    Block a, b, out;

    Items(fuzz::Input &input, bool packed)
        : an(1 + static_cast<int32_t>(input.below(39))), bn(1 + static_cast<int32_t>(input.below(39))),
          dn(1 + static_cast<int32_t>(input.below(39))), a(block(input, size(packed, an))),
          b(block(input, size(packed, bn))), out(size(packed, dn))
    {
    }
    static size_t size(bool packed, int32_t n) { return static_cast<size_t>(packed ? n / 2 + 1 : n); }
    static Block block(fuzz::Input &input, size_t bytes)
    {
        const std::string text = input.bytes(bytes);
        return {text.begin(), text.end()};
    }
};

void packed(fuzz::Input &input, unsigned deed)
{
    Items i(input, true);
    uint8_t *a = i.a.data(), *b = i.b.data(), *out = i.out.data();
    Block zoned(static_cast<size_t>(i.dn) + 1);
    switch (deed % 12) {
    case 0:
        _zvkcBCD_ADD_Pckd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 1:
        _zvkcBCD_SUB_Pckd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 2:
        _zvkcBCD_MPY_Pckd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 3:
        _zvkcBCD_DIV_Pckd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 4:
        _zvkcBCD_MOD_Pckd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 5:
        _zvkcBCD_GRT_Pckd(a, b, i.bn, i.an);
        break;
    case 6:
        _zvkcBCD_Cpy_Pckd(a, out, i.dn, i.an);
        break;
    case 7:
        _zvkcBCD_CONV_Pckd_To_ZndTS(a, zoned.data(), i.dn, i.an);
        break;
    case 8:
        _zvkcBCD_CONV_Pckd_To_Int8(a, i.an);
        break;
    case 9:
        _zvkcBCD_ADD_Pckd_Int8(a, i.an, input.take<int64_t>());
        break;
    case 10:
        _zvkcBCD_SUB_Pckd_Int4(a, i.an, input.take<int32_t>());
        break;
    default:
        _zvkcBCD_SHFD_Pckd_Left(a, out, i.dn, i.an, static_cast<int32_t>(input.below(45)));
    }
}

void zoned(fuzz::Input &input, unsigned deed)
{
    Items i(input, false);
    uint8_t *a = i.a.data(), *b = i.b.data(), *out = i.out.data();
    Block packedOut(static_cast<size_t>(i.dn / 2 + 1));
    switch (deed % 11) {
    case 0:
        _zvkcBCD_ADD_Znd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 1:
        _zvkcBCD_SUB_Znd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 2:
        _zvkcBCD_MPY_Znd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 3:
        _zvkcBCD_DIV_Znd(a, b, out, i.dn, i.bn, i.an);
        break;
    case 4:
        _zvkcBCD_LES_Znd(a, b, i.bn, i.an);
        break;
    case 5:
        _zvkcBCD_Cpy_ZndLO(a, out, i.dn, i.an);
        break;
    case 6:
        _zvkcBCD_CONV_ZndTO_To_Pckd(a, packedOut.data(), i.dn, i.an);
        break;
    case 7:
        _zvkcBCD_CONV_ZndUS_To_Pckd(a, packedOut.data(), i.dn, i.an);
        break;
    case 8:
        _zvkcBCD_CONV_Znd_To_Int8(a, i.an);
        break;
    case 9:
        _zvkcBCD_ADD_Znd_Int8(a, i.an, input.take<int64_t>());
        break;
    default:
        _zvkcBCD_CONV_ZndLO_To_ZndTO(a, out, i.dn, i.an);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const unsigned deed = input.take<uint8_t>();
    zvkBcdMode = input.take<uint8_t>();
    if (deed & 0x80)
        packed(input, deed & 0x7F);
    else
        zoned(input, deed);
    return 0;
}
