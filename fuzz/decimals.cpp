// Decimal operands: any bytes as packed and zoned items of any length, through arithmetic,
// comparisons, copies, shifts and conversions. All items end where their blocks end.
#include <iterator>
#include <vector>

#include "decimal/mode.h"
#include "fuzz.h"
#include "kvr2/decimal.h"
#include "kvr2/decimal_conversions.h"
#include "kvr2/decimal_scaling.h"

namespace {

using Block = std::vector<uint8_t>;

// Two operands and a result, and a result of the other kind.
struct Items {
    int32_t an, bn, dn;
    Block a, b, out, converted;
    fuzz::Input &input;

    Items(fuzz::Input &from, bool packed)
        : an(1 + static_cast<int32_t>(from.below(39))), bn(1 + static_cast<int32_t>(from.below(39))),
          dn(1 + static_cast<int32_t>(from.below(39))), a(block(from, size(packed, an))),
          b(block(from, size(packed, bn))), out(size(packed, dn)), converted(size(!packed, dn) + packed), input(from)
    {
    }
    static size_t size(bool packed, int32_t n) { return static_cast<size_t>(packed ? n / 2 + 1 : n); }
    static Block block(fuzz::Input &input, size_t bytes)
    {
        const std::string text = input.bytes(bytes);
        return {text.begin(), text.end()};
    }
};

using Deed = void (*)(Items &);
using Arithmetic = uint8_t *(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
using Convert = uint8_t *(const uint8_t *, uint8_t *, int32_t, int32_t);

template <Arithmetic *entry>
void compute(Items &i)
{
    entry(i.a.data(), i.b.data(), i.out.data(), i.dn, i.bn, i.an);
}
template <Convert *entry>
void copy(Items &i)
{
    entry(i.a.data(), i.out.data(), i.dn, i.an);
}
template <Convert *entry>
void convert(Items &i)
{
    entry(i.a.data(), i.converted.data(), i.dn, i.an);
}

constexpr Deed kPacked[] = {
    compute<_zvkcBCD_ADD_Pckd>,
    compute<_zvkcBCD_SUB_Pckd>,
    compute<_zvkcBCD_MPY_Pckd>,
    compute<_zvkcBCD_DIV_Pckd>,
    compute<_zvkcBCD_MOD_Pckd>,
    copy<_zvkcBCD_Cpy_Pckd>,
    convert<_zvkcBCD_CONV_Pckd_To_ZndTS>,
    convert<_zvkcBCD_CONV_Pckd_To_ZndTO>,
    [](Items &i) { _zvkcBCD_GRT_Pckd(i.a.data(), i.b.data(), i.bn, i.an); },
    [](Items &i) { _zvkcBCD_CONV_Pckd_To_Int8(i.a.data(), i.an); },
    [](Items &i) { _zvkcBCD_ADD_Pckd_Int8(i.a.data(), i.an, i.input.take<int64_t>()); },
    [](Items &i) { _zvkcBCD_SUB_Pckd_Int4(i.a.data(), i.an, i.input.take<int32_t>()); },
    [](Items &i) { _zvkcBCD_CONV_Int8_To_Pckd(i.input.take<int64_t>(), i.out.data(), i.dn); },
    [](Items &i) {
        _zvkcBCD_SHFD_Pckd_Left(i.a.data(), i.out.data(), i.dn, i.an, static_cast<int32_t>(i.input.below(45)));
    },
};

constexpr Deed kZoned[] = {
    compute<_zvkcBCD_ADD_Znd>,
    compute<_zvkcBCD_SUB_Znd>,
    compute<_zvkcBCD_MPY_Znd>,
    compute<_zvkcBCD_DIV_Znd>,
    copy<_zvkcBCD_Cpy_ZndLO>,
    copy<_zvkcBCD_CONV_ZndLO_To_ZndTO>,
    convert<_zvkcBCD_CONV_ZndTO_To_Pckd>,
    convert<_zvkcBCD_CONV_ZndUS_To_Pckd>,
    [](Items &i) { _zvkcBCD_LES_Znd(i.a.data(), i.b.data(), i.bn, i.an); },
    [](Items &i) { _zvkcBCD_CONV_Znd_To_Int8(i.a.data(), i.an); },
    [](Items &i) { _zvkcBCD_ADD_Znd_Int8(i.a.data(), i.an, i.input.take<int64_t>()); },
    [](Items &i) { _zvkcBCD_SUB_Znd_Int4(i.a.data(), i.an, i.input.take<int32_t>()); },
    [](Items &i) { _zvkcBCD_CONV_Int8_To_Znd(i.input.take<int64_t>(), i.out.data(), i.dn); },
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const unsigned deed = input.take<uint8_t>();
    zvkBcdMode = input.take<uint8_t>();
    Items items(input, deed & 0x80);
    if (deed & 0x80)
        kPacked[(deed & 0x7F) % std::size(kPacked)](items);
    else
        kZoned[deed % std::size(kZoned)](items);
    return 0;
}
