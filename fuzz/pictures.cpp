// Edited moves: pictures as a compiler lays them out, with any data. A picture is the compiler's,
// so its symbols are sound; the data is a user's.
#include <vector>

#include "fuzz.h"
#include "kvr2/edited_moves.h"

namespace {

constexpr uint32_t kMostPositions = 40;

std::string picture(fuzz::Input &input, const char *symbols)
{
    const size_t count = strlen(symbols);
    std::string text(1 + input.below(kMostPositions - 1), 0);
    for (char &symbol : text) symbol = symbols[input.take<uint8_t>() % count];
    return text;
}

// A copy that ends where its block ends, so that a step beyond it is seen.
template <class Record>
std::vector<uint8_t> record(const Record &head, size_t headSize, const std::string &tail)
{
    std::vector<uint8_t> bytes(headSize + tail.size());
    memcpy(bytes.data(), &head, headSize);
    memcpy(bytes.data() + headSize, tail.data(), tail.size());
    bytes.shrink_to_fit();
    return bytes;
}

void editNumber(fuzz::Input &input)
{
    NumericEditRecord head{};
    const std::string positions = picture(input, "9Z*$+-,.B0/PV");
    const int blank = input.take<uint8_t>() & 1 ? -1 : 1;
    head.length = static_cast<int16_t>(static_cast<int>(positions.size()) * (input.take<uint8_t>() & 1 ? -1 : 1));
    head.decimalPoint = input.take<uint8_t>() & 1 ? '.' : ',';
    head.currencySign = '$';
    head.editClass = static_cast<uint8_t>(blank * static_cast<int>(input.below(12)));
    std::vector<uint8_t> all = record(head, offsetof(NumericEditRecord, picture), positions);
    const std::string source = input.bytes(1 + positions.size());
    std::vector<uint8_t> from(source.begin(), source.end()), to(positions.size() + 2);
    _zvkcMoveNumToNumEdit(reinterpret_cast<NumericEditRecord *>(all.data()), from.data(), to.data());
    const std::string symbol = input.bytes(1 + input.below(8));
    CurrencyString unit{};
    unit.length = static_cast<uint16_t>(symbol.size());
    std::vector<uint8_t> currency = record(unit, offsetof(CurrencyString, symbol), symbol);
    to.resize(positions.size() + symbol.size() + 2);
    _zvkcMoveNumToNumEdit2(reinterpret_cast<NumericEditRecord *>(all.data()), from.data(), to.data(),
                           reinterpret_cast<CurrencyString *>(currency.data()));
}

void deEdit(fuzz::Input &input)
{
    DeEditRecord head{};
    const std::string positions = picture(input, "9Z*$+-,.B0/PV");
    head.length = static_cast<int16_t>(positions.size());
    std::vector<uint8_t> all = record(head, offsetof(DeEditRecord, picture), positions);
    const std::string source = input.bytes(positions.size() + 2);
    std::vector<uint8_t> from(source.begin(), source.end()), to(positions.size() + 2);
    _zvkcMoveNumEditToNum(reinterpret_cast<DeEditRecord *>(all.data()), from.data(), to.data());
}

void editText(fuzz::Input &input)
{
    AlphaEditRecord head{};
    const std::string positions = picture(input, "XA9B0/ ");
    head.length = static_cast<int16_t>(positions.size());
    head.repeat = input.take<uint8_t>() & 1;
    std::vector<uint8_t> all = record(head, offsetof(AlphaEditRecord, picture), positions);
    const std::string source = input.bytes(input.below(60));
    std::vector<uint8_t> from(source.begin(), source.end()), to(positions.size());
    _zvkcMoveAlphaNumEdit(reinterpret_cast<AlphaEditRecord *>(all.data()), from.data(), static_cast<int32_t>(from.size()),
                          to.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    switch (input.take<uint8_t>() % 3) {
    case 0:
        editNumber(input);
        break;
    case 1:
        deEdit(input);
        break;
    default:
        editText(input);
    }
    return 0;
}
