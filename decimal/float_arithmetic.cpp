// Conversions between floating-point formats and arithmetic on 128-bit binary floats: each is one
// operation of the compiler's own, kept from trapping.
#include "base/quiet_floats.h"
#include "decimal/float_forms.h"
#include "kvr2/float_conversions.h"

#define CONVERSION(name, From, To)                                                                                     \
    To name(From value)                                                                                                \
    {                                                                                                                  \
        return quietly([&] { return static_cast<To>(value); });                                                        \
    }

CONVERSION(_zvkcBCD_CONV_DFlt_To_EFlt, ZvkDecimal128, ZvkFloat128)
CONVERSION(_zvkcBCD_CONV_DFlt_To_LFlt, ZvkDecimal128, double)
CONVERSION(_zvkcBCD_CONV_DFlt_To_SFlt, ZvkDecimal128, float)
CONVERSION(_zvkcBCD_CONV_EFlt_To_DFlt, ZvkFloat128, ZvkDecimal128)
CONVERSION(_zvkcBCD_CONV_LFlt_To_DFlt, double, ZvkDecimal128)
CONVERSION(_zvkcBCD_CONV_SFlt_To_DFlt, float, ZvkDecimal128)
CONVERSION(_zvkcBCD_CONV_DFlt_To_Int8, ZvkDecimal128, int64_t)
CONVERSION(_zvkcBCD_CONV_DFlt_To_UInt8, ZvkDecimal128, uint64_t)
CONVERSION(_zvkcBCD_CONV_EFlt_To_Int8, ZvkFloat128, int64_t)
CONVERSION(_zvkc_CONV_Int4_To_BFlt128, int32_t, ZvkFloat128)
CONVERSION(_zvkc_CONV_Uns4_To_BFlt128, uint32_t, ZvkFloat128)
CONVERSION(_zvkc_CONV_Int8_To_BFlt128, int64_t, ZvkFloat128)
CONVERSION(_zvkc_CONV_Uns8_To_BFlt128, uint64_t, ZvkFloat128)
CONVERSION(_zvkc_CONV_SFlt_To_BFlt128, float, ZvkFloat128)
CONVERSION(_zvkc_CONV_LFlt_To_BFlt128, double, ZvkFloat128)
CONVERSION(_zvkc_CONV_BFlt128_To_Int4, ZvkFloat128, int32_t)
CONVERSION(_zvkc_CONV_BFlt128_To_Uns4, ZvkFloat128, uint32_t)
CONVERSION(_zvkc_CONV_BFlt128_To_Int8, ZvkFloat128, int64_t)
CONVERSION(_zvkc_CONV_BFlt128_To_Uns8, ZvkFloat128, uint64_t)
CONVERSION(_zvkc_CONV_BFlt128_To_SFlt, ZvkFloat128, float)
CONVERSION(_zvkc_CONV_BFlt128_To_LFlt, ZvkFloat128, double)

#define OPERATION(name, Result, operation)                                                                             \
    Result name(ZvkFloat128 op1, ZvkFloat128 op2)                                                                      \
    {                                                                                                                  \
        return quietly([&] { return static_cast<Result>(op1 operation op2); });                                        \
    }

OPERATION(_zvkc_ADD_BFlt128, ZvkFloat128, +)
OPERATION(_zvkc_SUB_BFlt128, ZvkFloat128, -)
OPERATION(_zvkc_MPY_BFlt128, ZvkFloat128, *)
OPERATION(_zvkc_DIV_BFlt128, ZvkFloat128, /)
OPERATION(_zvkc_EQU_BFlt128, int32_t, ==)
OPERATION(_zvkc_NEQ_BFlt128, int32_t, !=)
OPERATION(_zvkc_GEQ_BFlt128, int32_t, >=)
OPERATION(_zvkc_LEQ_BFlt128, int32_t, <=)
OPERATION(_zvkc_GRT_BFlt128, int32_t, >)
OPERATION(_zvkc_LES_BFlt128, int32_t, <)

ZvkFloat128 _zvkc_ABS_BFlt128(ZvkFloat128 value) { return floats::magnitudeOf<floats::Binary128>(value); }
