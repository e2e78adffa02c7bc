// De-editing: from a numeric-edited item back to digits and a sign.
//
// The picture says for each source byte whether it is a digit, an insertion or a place of the sign
// or of the currency symbol. A floating string stands for digits at all its positions but the
// first; the sign may be found at any of them, and on an insertion between them:
//
//     picture "--,--9.99"   source "    -5.00"   ->   "000500-": the sign is where the
//                                                                       string ended, zeros before it
//
// The sign byte comes last at the destination, though editing takes it first.
#include <cstring>

#include "kvr2/edited_moves.h"

namespace {

bool isSign(uint8_t c) { return c == '+' || c == '-'; }
bool isDigit(uint8_t c) { return c >= '0' && c <= '9'; }

// The edited item as it is.
struct PlainSource {
    const uint8_t *bytes;
    uint8_t operator[](int index) const { return bytes[index]; }
};

// The edited item as if its long currency symbol were a "$".
struct SourceWithSymbol {
    const uint8_t *bytes;
    int before; // bytes before the symbol, of which at most kKept are taken
    int symbol; // bytes of the symbol
    int length; // bytes of the whole item
    static constexpr int kKept = 250;
    uint8_t operator[](int index) const
    {
        int kept = before < kKept ? before : kKept;
        if (index < kept) return bytes[index];
        if (index == kept) return '$';
        int behind = before + symbol + (index - kept - 1);
        return behind < length ? bytes[behind] : uint8_t{0};
    }
};

template <class Source>
class DeEdit {
public:
    DeEdit(Source source, uint8_t *destination) : source_(source), out_(destination) {}

    // False: the source does not fit the picture.
    bool walk(const uint8_t *picture, int length)
    {
        for (int i = 0; i < length; i++) {
            uint8_t symbol = picture[i];
            if (symbol == 'P' || symbol == 'V') continue;
            uint8_t c = source_[position_++];
            switch (symbol) {
            case ' ':
            case '.':
            case '/':
            case '0':
                if (signPositions_ > 0 && isSign(c) && signFollows(picture + i + 1, length - i - 1)) sign_ = c;
                break;
            case ',':
                if (isSign(c)) sign_ = c;
                break;
            case '$':
                currency(c);
                break;
            case '*':
                put(c == '*' ? uint8_t{'0'} : c);
                break;
            case '9':
            case 'Z':
                put(c == ' ' ? uint8_t{'0'} : c);
                break;
            case '+':
            case '-':
                if (!sign(c, symbol, signPositions_++ == 0)) return false;
                break;
            default: // CR or DB: the pair in the picture against the pair in the source
                if (i + 1 == length || !creditOrDebit(c, picture + i)) return false;
                i++;
                break;
            }
        }
        put(sign_ ? sign_ : uint8_t{'+'});
        return true;
    }

private:
    void put(uint8_t byte) { *out_++ = byte; }

    static bool signFollows(const uint8_t *picture, int length)
    {
        for (int i = 0; i < length; i++)
            if (isSign(picture[i])) return true;
        return false;
    }

    void currency(uint8_t c)
    {
        bool first = currencyPositions_++ == 0;
        if (isDigit(c))
            put(c);
        else if (!first)
            put('0');
    }

    bool takeSign(uint8_t sign)
    {
        if (sign_) return false;
        sign_ = sign;
        return true;
    }

    // A position "+" or "-" of the picture. Under "-" a "+" of the source is no sign but just
    // another byte.
    bool sign(uint8_t c, uint8_t symbol, bool first)
    {
        if (symbol == '+' ? isSign(c) : c == '-') {
            if (!takeSign(c)) return false;
            if (!first) put('0');
            return true;
        }
        if (isDigit(c)) {
            if (first) return false;
            if (!sign_) {
                if (symbol == '+') return false;
                sign_ = '+';
            }
            put(c);
            return true;
        }
        if (c != ' ') return takeSign('+');
        if (!first) put('0');
        return true;
    }

    bool creditOrDebit(uint8_t c, const uint8_t *pair)
    {
        uint8_t second = source_[position_++];
        if (c == ' ') {
            sign_ = '+';
            return second == ' ';
        }
        sign_ = '-';
        return c == pair[0] && second == pair[1];
    }

    Source source_;
    uint8_t *out_;
    int position_ = 0; // in the source
    uint8_t sign_ = 0; // none, "+" or "-"
    int currencyPositions_ = 0, signPositions_ = 0;
};

int pictureLength(const DeEditRecord &record) { return record.length > 0 ? record.length : 0; }

// Bytes of an item with such a picture.
int itemLength(const uint8_t *picture, int positions)
{
    int length = 0;
    for (int i = 0; i < positions; i++) length += picture[i] != 'P' && picture[i] != 'V';
    return length;
}

} // namespace

extern "C" {

int32_t _zvkcMoveNumEditToNum(const DeEditRecord *record, const uint8_t *source, uint8_t *destination)
{
    return !DeEdit<PlainSource>({source}, destination).walk(record->picture, pictureLength(*record));
}

int32_t _zvkcMoveNumEditToNum2(const DeEditRecord *record, const uint8_t *source, uint8_t *destination,
                               const CurrencyString *currency)
{
    int limit = record->length < 0 ? -int{record->length} : record->length;
    int symbol = static_cast<int>(strnlen(reinterpret_cast<const char *>(currency->symbol), currency->length));
    if (symbol == 0) return _zvkcMoveNumEditToNum(record, source, destination);
    int length = itemLength(record->picture, limit) + symbol - 1;
    size_t searched =
        strnlen(reinterpret_cast<const char *>(source), static_cast<size_t>(length < limit ? length : limit));
    const void *found = memmem(source, searched, currency->symbol, static_cast<size_t>(symbol));
    if (!found) return _zvkcMoveNumEditToNum(record, source, destination);
    SourceWithSymbol view{source, static_cast<int>(static_cast<const uint8_t *>(found) - source), symbol, length};
    return !DeEdit<SourceWithSymbol>(view, destination).walk(record->picture, pictureLength(*record));
}
}
