// MOVE of a number to a numeric-edited item.
//
// One pass over the picture, one stored byte a position. The number comes as a sign byte and one
// digit for each digit position. What a position stores depends on what stood before it: has a
// digit that counts been stored (significant), has something else made the rest show (forced: a
// point, a zero insertion, a floated symbol), is the point behind us, was the latest digit
// suppressed. A floating string stores blanks while only zeros come; at the first digit that
// counts, or at the point, its symbol is placed over the byte just stored:
//
//     $$,$$9.99   000500   ->   blank blank blank blank "$" "5" ".00":   at "9" the symbol goes over the fourth blank
//
// An insertion between the characters of the string becomes a blank as long as nothing counts.
#include <cstring>

#include "kvr2/edited_moves.h"

namespace {

enum class SignShown : uint8_t { Blank, AsGiven, MinusOrBlank };
enum class Floats : uint8_t { Nothing, Sign, Currency };

struct EditClass {
    SignShown sign;
    Floats floats;
    bool starsWhenZero; // the all-zero rule keeps stars
};

constexpr int kClassCount = 13;
constexpr EditClass kClasses[kClassCount] = {
    {SignShown::Blank, Floats::Nothing, true},     {SignShown::Blank, Floats::Nothing, true},
    {SignShown::AsGiven, Floats::Nothing, true},   {SignShown::MinusOrBlank, Floats::Nothing, true},
    {SignShown::AsGiven, Floats::Nothing, true},   {SignShown::AsGiven, Floats::Nothing, true},
    {SignShown::AsGiven, Floats::Sign, true},      {SignShown::MinusOrBlank, Floats::Sign, true},
    {SignShown::AsGiven, Floats::Sign, false},     {SignShown::MinusOrBlank, Floats::Sign, false},
    {SignShown::AsGiven, Floats::Currency, false}, {SignShown::MinusOrBlank, Floats::Currency, false},
    {SignShown::Blank, Floats::Currency, false},
};

// What a position stores once suppression has ended.
enum Kind : uint8_t { kDigit, kBlank, kSlash, kZero, kSeparator, kPoint, kSign, kCurrency, kOther };

struct Kinds {
    uint8_t of[256];
    constexpr Kinds() : of()
    {
        for (uint8_t &kind : of) kind = kOther; // "*", `V`, `P`, CR and DB among them
        set('9', kDigit);
        set('Z', kDigit);
        set(' ', kBlank);
        set('/', kSlash);
        set('0', kZero);
        set(',', kSeparator);
        set('.', kPoint);
        set('+', kSign);
        set('-', kSign);
        set('$', kCurrency);
    }
    constexpr void set(uint8_t symbol, Kind kind) { of[symbol] = kind; }
};
constexpr Kinds kKinds;

template <Floats floats>
class NumericEdit {
public:
    NumericEdit(const NumericEditRecord &record, const EditClass &editClass, const uint8_t *source,
                uint8_t *destination)
        : firstDigit_(source + 1), digit_(firstDigit_), start_(destination), out_(destination),
          currency_(record.currencySign)
    {
        bool comma = record.decimalPoint != '.';
        point_ = comma ? ',' : '.';
        separator_ = comma ? '.' : ',';
        sign_ = editClass.sign == SignShown::AsGiven                          ? *source
                : editClass.sign == SignShown::MinusOrBlank && *source == '-' ? uint8_t{'-'}
                                                                              : uint8_t{' '};
    }

    [[gnu::always_inline]] void walk(const uint8_t *picture, int length)
    {
        const uint8_t *end = picture + length;
        picture = walkToFirstDigit(picture, end);
        walkShown(picture, end);
    }

    // A digit that is not stored is a "0", so all that were taken tell.
    [[gnu::always_inline]] bool isZero() const
    {
        uint32_t sum = 0;
        for (const uint8_t *digit = firstDigit_; digit < digit_; digit++) sum += *digit & 0x0Fu;
        return sum == 0;
    }
    bool filledWithStars() const { return fill_ == '*'; }
    size_t stored() const { return static_cast<size_t>(out_ - start_); }

    [[gnu::always_inline]] void blankAll() { memset(start_, ' ', stored()); }
    [[gnu::always_inline]] void starAll()
    {
        for (uint8_t *byte = start_; byte < out_; byte++)
            if (*byte != point_) *byte = '*';
    }

private:
    // The positions up to and including the first digit that counts. Returns the next one.
    [[gnu::always_inline]] const uint8_t *walkToFirstDigit(const uint8_t *picture, const uint8_t *end)
    {
        for (; picture < end && (!significant_ || suppressing_); picture++) {
            picture = skipZeros(picture, end);
            if (picture == end) break;
            switch (*picture) {
            case ' ':
            case '/':
                insertion(*picture);
                break;
            case ',':
                separator();
                break;
            case '.':
                point();
                store(point_);
                break;
            case 'V':
                point();
                break;
            case '0':
                zero();
                break;
            case '9':
                nine();
                break;
            case '*':
                fill_ = '*';
                [[fallthrough]];
            case 'Z':
                suppressed();
                break;
            case '+':
            case '-':
                floats == Floats::Sign ? floating() : store(sign_);
                break;
            case '$':
                floats == Floats::Currency ? floating() : store(currency_);
                break;
            case 'P':
                break;
            default:
                picture += creditOrDebit(picture, end);
                break;
            }
        }
        return picture;
    }

    // The most common positions: further zeros of a string that has begun, and separators among
    // them.
    [[gnu::always_inline]] const uint8_t *skipZeros(const uint8_t *picture, const uint8_t *end)
    {
        if (forced_ || (kFloats ? !inside_ || suppressing_ : !suppressing_ || afterPoint_)) return picture;
        const uint8_t fill = kFloats ? ' ' : fill_;
        const uint8_t symbol = kFloats ? '$' : fill == '*' ? '*' : 'Z';
        const uint8_t *digit = digit_;
        uint8_t *out = out_;
        for (; picture < end; picture++) {
            bool isString = floats == Floats::Sign ? *picture == '+' || *picture == '-' : *picture == symbol;
            if (isString ? *digit != '0' : *picture != ',') break;
            digit += isString;
            *out++ = fill;
        }
        digit_ = digit;
        out_ = out;
        return picture;
    }

    // The positions after it: nothing is suppressed any more, and each kind of position stores a
    // digit or one certain byte.
    [[gnu::always_inline]] void walkShown(const uint8_t *picture, const uint8_t *end)
    {
        const uint8_t bytes[] = {0, ' ', '/', '0', separator_, point_, sign_, currency_};
        unsigned takesDigit = 1u << kDigit;
        if constexpr (floats != Floats::Nothing) takesDigit |= floats == Floats::Sign ? 1u << kSign : 1u << kCurrency;
        const uint8_t *digit = digit_;
        uint8_t *out = out_;
        for (; picture < end; picture++) {
            unsigned kind = kKinds.of[*picture];
            if (kind >= kOther) {
                if (*picture == '*') {
                    fill_ = '*';
                    kind = kDigit;
                } else if (*picture == 'V' || *picture == 'P') {
                    continue;
                } else {
                    out_ = out;
                    picture += creditOrDebit(picture, end);
                    out = out_;
                    continue;
                }
            }
            *out++ = takesDigit >> kind & 1 ? *digit++ : bytes[kind];
        }
        digit_ = digit;
        out_ = out;
    }

    // Two positions at once, but a picture that ends between them has one. Returns how many more
    // than one were taken.
    [[gnu::always_inline]] int creditOrDebit(const uint8_t *picture, const uint8_t *end)
    {
        bool shown = sign_ == '-';
        store(shown ? picture[0] : uint8_t{' '});
        if (picture + 1 == end) return 0;
        store(shown ? picture[1] : uint8_t{' '});
        return 1;
    }

    [[gnu::always_inline]] void store(uint8_t byte) { *out_++ = byte; }
    [[gnu::always_inline]] void storeDigit() { *out_++ = *digit_++; }
    [[gnu::always_inline]] void placeSymbol()
    {
        if (out_ > start_) out_[-1] = floats == Floats::Sign ? sign_ : currency_;
    }
    static constexpr bool kFloats = floats != Floats::Nothing;
    bool beforeFirst() const { return kFloats && !inside_; }
    bool inside() const { return kFloats && inside_; }
    [[gnu::always_inline]] bool insideAndInsignificant() const { return inside() && !significant_ && !afterPoint_; }

    [[gnu::always_inline]] void insertion(uint8_t byte)
    {
        if (beforeFirst())
            store(byte);
        else if (insideAndInsignificant())
            store(' ');
        else
            store(suppressing_ ? fill_ : byte);
    }

    [[gnu::always_inline]] void separator()
    {
        if (significant_ || forced_)
            store(separator_);
        else if (suppressing_)
            store(fill_);
        else
            store(inside() ? uint8_t{' '} : separator_);
    }

    [[gnu::always_inline]] void point()
    {
        if (!significant_ && kFloats) {
            placeSymbol();
            forced_ = true;
        }
        afterPoint_ = true;
        suppressing_ = false;
    }

    [[gnu::always_inline]] void zero()
    {
        if (beforeFirst()) {
            store('0');
        } else if (insideAndInsignificant()) {
            store(' ');
        } else if (suppressing_) {
            store(fill_);
        } else {
            store('0');
            forced_ = true;
        }
    }

    [[gnu::always_inline]] void nine()
    {
        if (kFloats && !significant_ && !afterPoint_) placeSymbol();
        storeDigit();
        significant_ = true;
        suppressing_ = false;
    }

    [[gnu::always_inline]] void suppressed()
    {
        if (significant_ || afterPoint_) {
            storeDigit();
            significant_ = true;
        } else if (*digit_ == '0') {
            digit_++;
            store(fill_);
            suppressing_ = true;
        } else {
            if (kFloats) placeSymbol();
            storeDigit();
            significant_ = true;
            suppressing_ = false;
        }
    }

    [[gnu::always_inline]] void floating()
    {
        if (significant_ || forced_) {
            storeDigit();
        } else if (beforeFirst()) {
            store(' ');
            inside_ = true;
        } else if (*digit_ == '0') {
            digit_++;
            store(' ');
        } else {
            placeSymbol();
            storeDigit();
            significant_ = true;
        }
    }

    const uint8_t *const firstDigit_, *digit_;
    uint8_t *const start_, *out_;
    uint8_t sign_, currency_, separator_, point_;
    uint8_t fill_ = ' ';
    bool inside_ = false; // of the floating string
    bool significant_ = false, forced_ = false, afterPoint_ = false, suppressing_ = false;
};

// Edits at most `limit` positions; returns the number of bytes stored.
template <Floats floats>
[[gnu::noinline]] size_t edit(const NumericEditRecord &record, const EditClass &editClass, bool blankWhenZero,
                              const uint8_t *source, uint8_t *destination, int limit)
{
    bool allSuppress = record.length < 0;
    int length = allSuppress ? -int{record.length} : record.length;
    NumericEdit<floats> walk(record, editClass, source, destination);
    walk.walk(record.picture, length < limit ? length : limit);
    if ((blankWhenZero || allSuppress) && walk.isZero()) {
        if (!blankWhenZero && walk.filledWithStars() && editClass.starsWhenZero)
            walk.starAll();
        else
            walk.blankAll();
    }
    return walk.stored();
}

size_t edit(const NumericEditRecord &record, const uint8_t *source, uint8_t *destination, int limit)
{
    bool blankWhenZero = record.editClass >= kClassCount;
    uint8_t number = static_cast<uint8_t>(blankWhenZero ? -record.editClass : record.editClass);
    const EditClass &editClass = kClasses[number < kClassCount ? number : 0];
    switch (editClass.floats) {
    case Floats::Nothing:
        return edit<Floats::Nothing>(record, editClass, blankWhenZero, source, destination, limit);
    case Floats::Sign:
        return edit<Floats::Sign>(record, editClass, blankWhenZero, source, destination, limit);
    case Floats::Currency:
        return edit<Floats::Currency>(record, editClass, blankWhenZero, source, destination, limit);
    }
    return 0;
}

} // namespace

extern "C" {

void _zvkcMoveNumToNumEdit(const NumericEditRecord *record, const uint8_t *source, uint8_t *destination)
{
    edit(*record, source, destination, INT16_MAX + 1);
}

void _zvkcMoveNumToNumEdit2(const NumericEditRecord *record, const uint8_t *source, uint8_t *destination,
                            const CurrencyString *currency)
{
    uint8_t text[264];
    size_t length = edit(*record, source, text, sizeof text - 1);
    const uint8_t *found = static_cast<const uint8_t *>(memchr(text, record->currencySign, length));
    if (!found) {
        memcpy(destination, text, length);
        return;
    }
    size_t before = static_cast<size_t>(found - text);
    memcpy(destination, text, before);
    memcpy(destination + before, currency->symbol, currency->length);
    memcpy(destination + before + currency->length, found + 1, length - before - 1);
}
}
