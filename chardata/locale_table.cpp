// The rows of the locale table; see locale_table.h.
//
// The order is part of the table: a key is sought from the top (so the second JA_JP row is reached
// by its code pages only), a code page from the user is sought from the top over both EBCDIC
// columns, and a row can be meant by its number.
#include "chardata/locale_table.h"

#define BLANKS                                                                                                         \
    {                                                                                                                  \
        0x20, 0x20                                                                                                     \
    }

// clang-format off
const CodePageRow kCodePageRows[kCodePageRowCount] = {
    {"CA_ES", BLANKS, "TQX-285", "TQX-1145", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"DA_DK", BLANKS, "TQX-277", "TQX-1142", "TQX-850", "TQX-865", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"DE_DE", BLANKS, "TQX-273", "TQX-1141", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"DE_CH", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_AU", BLANKS, "TQX-037", "TQX-1140", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_BE", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_GB", BLANKS, "TQX-285", "TQX-1146", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_JP", BLANKS, "TQX-037", "TQX-1140", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_US", BLANKS, "TQX-037", "TQX-1140", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"EN_ZA", BLANKS, "TQX-037", "TQX-1140", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"ES_ES", BLANKS, "TQX-284", "TQX-1145", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"FI_FI", BLANKS, "TQX-278", "TQX-1143", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"FR_BE", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"FR_CA", BLANKS, "TQX-037", "TQX-1140", "TQX-850", "TQX-863", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"FR_CH", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"FR_FR", BLANKS, "TQX-297", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"IS_IS", BLANKS, "TQX-871", "TQX-1149", "TQX-850", "TQX-861", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"IT_CH", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"IT_IT", BLANKS, "TQX-280", "TQX-1144", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"NL_BE", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"NL_NL", BLANKS, "TQX-037", "TQX-1140", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"NO_NO", BLANKS, "TQX-277", "TQX-1142", "TQX-850", "TQX-865", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"PT_BR", BLANKS, "TQX-037", "TQX-1140", "TQX-850", "TQX-860", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"PT_PT", BLANKS, "TQX-037", "TQX-1140", "TQX-850", "TQX-860", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"SQ_AL", BLANKS, "TQX-500", "TQX-1148", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"SV_SE", BLANKS, "TQX-278", "TQX-1143", "TQX-437", "TQX-850", "TQX-1252", "TQX-5348", "ISO8859-1", "ISO8859-15"},
    {"HR_HR", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"CS_CZ", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"HU_HU", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"PL_PL", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"RO_RO", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"SH_SP", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"SK_SK", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"SL_SI", BLANKS, "TQX-870", "TQX-1153", "TQX-852", "", "TQX-1250", "TQX-5346", "ISO8859-2", ""},
    {"BE_BY", BLANKS, "TQX-1025", "TQX-1154", "TQX-866", "TQX-1131", "TQX-1251", "TQX-5347", "ISO8859-5", ""},
    {"BG_BG", BLANKS, "TQX-1025", "TQX-1154", "TQX-855", "TQX-866", "TQX-1251", "TQX-5347", "ISO8859-5", ""},
    {"MK_MK", BLANKS, "TQX-1025", "TQX-1154", "TQX-855", "TQX-866", "TQX-1251", "TQX-5347", "ISO8859-5", ""},
    {"RU_RU", BLANKS, "TQX-1025", "TQX-1154", "TQX-866", "TQX-855", "TQX-1251", "TQX-5347", "ISO8859-5", ""},
    {"UK_UA", BLANKS, "TQX-1123", "TQX-1158", "TQX-1125", "TQX-866", "TQX-1251", "TQX-5347", "ISO8859-5", ""},
    {"AR_AA", BLANKS, "TQX-16804", "TQX-420", "TQX-864", "TQX-720", "TQX-1256", "TQX-5352", "ISO8859-6", ""},
    {"EL_GR", BLANKS, "TQX-875", "TQX-4971", "TQX-869", "TQX-737", "TQX-1253", "TQX-5349", "ISO8859-7", ""},
    {"IW_IL", BLANKS, "TQX-12712", "TQX-424", "TQX-862", "TQX-856", "TQX-1255", "TQX-5351", "ISO8859-8", ""},
    {"ET_EE", BLANKS, "", "TQX-1157", "TQX-922", "TQX-775", "TQX-1257", "TQX-5353", "ISO8859-13", "ISO8859-4"},
    {"LV_LV", BLANKS, "TQX-1112", "TQX-1156", "TQX-921", "TQX-775", "TQX-1257", "TQX-5353", "ISO8859-13", "ISO8859-4"},
    {"LT_LT", BLANKS, "TQX-1112", "TQX-1156", "TQX-921", "TQX-775", "TQX-1257", "TQX-5353", "ISO8859-13", "ISO8859-4"},
    {"TR_TR", BLANKS, "TQX-1026", "TQX-1155", "TQX-857", "", "TQX-1254", "TQX-5350", "ISO8859-9", ""},
    {"ZH_CN", {0xA1, 0xA1}, "", "TQX-1388", "TQX-1386", "", "GBK", "GB18030", "TQX-1383", ""},
    {"ZH_TW", {0xA1, 0x40}, "TQX-1371", "TQX-937", "TQX-950", "Big5", "TQX-1373", "", "TQX-964", ""},
    {"JA_JP", {0x81, 0x40}, "TQX-939", "TQX-1399", "TQX-942", "TQX-943", "TQX-943", "", "TQX-eucJP", "TQX-33722"},
    {"JA_JP", {0x81, 0x40}, "TQX-930", "TQX-1390", "TQX-942", "TQX-943", "TQX-943", "", "TQX-eucJP", "TQX-33722"},
    {"KO_KR", {0xA1, 0xA1}, "TQX-933", "TQX-1364", "TQX-949", "", "TQX-1363", "", "TQX-eucKR", "TQX-970"},
    {"TH_TH", BLANKS, "", "TQX-9030", "TQX-874", "", "TQX-1162", "", "TIS-620", ""},
    {"VI_VT", BLANKS, "TQX-1130", "TQX-1164", "TQX-1129", "", "TQX-1258", "TQX-5354", "", ""},
};
// clang-format on
