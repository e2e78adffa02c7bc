// DISPLAY, ACCEPT.
//
// A number is shown as its digits: a minus sign in front where it has a sign and is negative, the
// decimal point where it has places. Zoned items whose sign is part of a digit are shown likewise;
// those with a separate sign as they are.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// The device of UPON; null: the statement is another one and done, or an error was told.
const char *Emitter::displayDevice(const DisplayStatement &s)
{
    Word name = s.upon;
    for (const Mnemonic &m : program_->mnemonics)
        if (m.name == s.upon) name = m.device;
    const std::string &text = wordText(name);
    auto setEnvironment = [&](std::string_view routine, const Expr *e) {
        Text t = this->text(e, true);
        put(routine, "(", t.address, ", ", t.length, ");\n");
        return nullptr;
    };
    const std::string_view setName = emits(Do::DisplayEnvironmentName, Of::Text);
    const std::string_view setValue = emits(Do::DisplayEnvironmentValue, Of::Text);
    if (name == K_ENVIRONMENT) { // SET ENVIRONMENT name TO value
        setEnvironment(setName, s.items[0]);
        return setEnvironment(setValue, s.items[1]);
    }
    if (text == "ENVIRONMENT-NAME") return setEnvironment(setName, s.items[0]);
    if (text == "ENVIRONMENT-VALUE") return setEnvironment(setValue, s.items[0]);
    if (text == "ARGUMENT-NUMBER") {
        put("kvr_next_argument = (int)", integer(s.items[0]), ";\n");
        return nullptr;
    }
    if (text == "COMMAND-LINE") {
        notBuilt(s.uponAt, "DISPLAY UPON " + text);
        return nullptr;
    }
    if (text == "CONSOLE" || text == "CRT" || text == "TERMINAL") return "ZVK_DISPLAY_CONSOLE";
    if (text == "SYSPUNCH" || text == "SYSPCH") return "ZVK_DISPLAY_SYSPUNCH";
    if (text == "SYSERR" || text == "STDERR") return "KVR_DISPLAY_ERROR";
    if (text == "SYSOUT" || text == "SYSLST" || text == "SYSLIST" || text == "STDOUT" || text == "PRINTER" ||
        name != s.upon)
        return "ZVK_DISPLAY_SYSOUT";
    error(s.uponAt, "there is no device " + text);
    return nullptr;
}

// How many digits an item shows.
static int shownDigits(const Item &item)
{
    if (item.isIndexName || item.usage == Usage::Index) return item.specialKind ? item.picture.digits : 9;
    if (item.nativeBinary || item.usage != Usage::Native || item.specialKind) return item.picture.digits;
    return std::max(item.size == 2 ? 5 : item.size == 4 ? 10 : item.size == 8 ? 19 : 3, item.picture.digits);
}

// The text of a number; `item`: of which item, null for what is computed. False: an error was told.
bool Emitter::displayedNumber(Num n, const Item *item, Shown &out)
{
    if (!n.good()) return false;
    std::string length;
    if (n.kind == Num::Float) {
        out.address = tempBytes(48);
        out.size = length = temp("int");
        put(length, " = ", emits(Do::Show, Of::Float), "(", n.text, ", ", out.address, ", ",
            item && item->usage == Usage::Float ? 7 : 15, ", '", program_->commaIsPoint ? ',' : '.', "');\n");
        return true;
    }
    int digits = item ? shownDigits(*item) : n.digits, sign = item ? n.isSigned : 2;
    if (n.scale < 0) {
        n = scaleUp(std::move(n), 0);
        digits = n.digits;
    }
    n = toPacked(std::move(n));
    out.address = tempBytes(digits + n.scale + 8);
    out.size = length = temp("int");
    if (!item) digits = n.digits;
    if (digits > n.digits) {
        std::string wider = tempBytes(digits / 2 + 1);
        n.text = cat(emits(Do::WidenShown, Of::Packed), "(", n.text, ", ", wider, ", ", digits, ", ", n.digits, ")");
        n.digits = digits;
    }
    put(length, " = ", emits(Do::Show, Of::Packed), "(", n.text, ", ", n.digits, ", ", digits, ", ", n.scale, ", ",
        sign, ", '", program_->commaIsPoint ? ',' : '.', "', ", out.address, ");\n");
    return true;
}

// Where what an operand shows is. False: an error was told.
bool Emitter::displayed(const Expr *e, Shown &out)
{
    if (e->kind == ExprKind::Number || (e->kind == ExprKind::Negate && e->left->kind == ExprKind::Number)) {
        // As it is written.
        std::string t = e->kind == ExprKind::Number ? std::string(e->text) : "-" + std::string(e->left->text);
        out = {bytesLiteral(t), cat(t.size())};
        return true;
    }
    if (isNumericExpr(e)) {
        const Item *item = e->kind == ExprKind::Reference ? meaning_.resolve(*program_, *e->ref) : nullptr;
        Loc loc = item ? locate(*e->ref) : Loc{};
        if (e->kind == ExprKind::Function && userFunction(e) && callFunction(e, loc)) item = loc.item;
        if (item && !loc.good()) return false;
        bool asItIs = item && item->usage == Usage::Display && item->picture.scale == 0 &&
                      (item->signForm == SignForm::LeadingSeparate || item->signForm == SignForm::TrailingSeparate ||
                       item->signForm == SignForm::None);
        if (!asItIs) return displayedNumber(item ? itemNumber(loc) : number(e), item, out);
        out = {loc.address, loc.length};
        return true;
    }
    if (categoryOf(e) == Category::Pointer && e->kind == ExprKind::Reference) {
        Loc loc = locate(*e->ref);
        out = {tempBytes(24), temp("int")};
        put(out.size, " = ", emits(Do::Show, Of::Pointer), "(", loc.address, ", ", out.address, ");\n");
        return true;
    }
    Text t = text(e);
    if (!t.good) return false;
    out = {t.address, t.length};
    if (t.fixed < 0) {
        out = {temp("const uint8_t *"), temp("uint64_t")};
        put(out.address, " = ", t.address, "; ", out.size, " = (uint64_t)", t.length, ";\n");
    }
    return true;
}

// EXHIBIT CHANGED. What each item has shown is kept: its length (4 bytes) and up to 252 bytes.
void Emitter::exhibitChanged(const DisplayStatement &s)
{
    const std::string kept = cat("exhibited", ++inFile_.constants),
                      items = temp("DisplayItem", cat("[", s.items.size(), "]")), count = temp("int");
    globals_ += cat("static uint8_t ", kept, "[", s.exhibited.size(), "][256];\n");
    inProgram_.beginsAgain += joined("memset(", kept, ", 0, sizeof ", kept, ");\n");
    put(cat(count, " = 0;\n"));
    size_t next = 0;
    for (size_t operand = 0; operand < s.exhibited.size(); operand++) {
        std::vector<Shown> shown(s.exhibited[operand]);
        for (Shown &one : shown)
            if (!displayed(constant(s.items[next++]), one)) return;
        put(cat("if (", emits(Do::Changed, Of::Text), "(", kept, "[", operand, "], ", shown.back().address, ", ",
                shown.back().size, ")) {\n"));
        for (size_t i = 0; i < shown.size(); i++) {
            const bool blank = operand > 0 && i == 0; // none in front of the first that is shown
            put(cat(blank ? cat("if (", count, ") ") : "", items, "[", count, "++] = (DisplayItem){", shown[i].address,
                    ", ", shown[i].size, ", ", shown[i].size, ", ZVK_DISPLAY_TEXT, 0};\n"));
        }
        put("}\n");
    }
    put(cat("if (", count, ") ", emits(Do::Display, Of::Text), "(", items, ", ", count, ", ZVK_DISPLAY_SYSOUT, 0);\n"));
}

void Emitter::displayStatement(const DisplayStatement &s)
{
    if (!s.exhibited.empty()) return exhibitChanged(s);
    const char *device = s.upon ? displayDevice(s) : "ZVK_DISPLAY_SYSOUT";
    if (!device) return;
    std::string items = temp("DisplayItem", cat("[", s.items.size(), "]"));
    for (size_t i = 0; i < s.items.size(); i++) {
        Shown shown;
        if (!displayed(constant(s.items[i]), shown)) return;
        put(items, "[", i, "] = (DisplayItem){", shown.address, ", ", shown.size, ", ", shown.size,
            ", ZVK_DISPLAY_TEXT, 0};\n");
    }
    put(emits(Do::Display, Of::Text), "(", items, ", ", s.items.size(), ", ", device, ", ", s.noAdvancing ? 1 : 0,
        ");\n");
    if (s.exception.hasNot) block(s.exception.onNot);
}

// ---- ACCEPT

namespace {

// What the clock is asked for, and how many digits it gives.
struct ClockRow {
    Word from;
    bool longYear;
    std::string_view flags;
    int digits;
};

constexpr ClockRow kClocks[] = {
    {K_DATE, false, "ZVK_ACCEPT_DATE", 6}, {K_DATE, true, "ZVK_ACCEPT_DATE | ZVK_ACCEPT_LONG_YEAR", 8},
    {K_DAY, false, "ZVK_ACCEPT_DAY", 5},   {K_DAY, true, "ZVK_ACCEPT_DAY | ZVK_ACCEPT_LONG_YEAR", 7},
    {K_TIME, false, "ZVK_ACCEPT_TIME", 8}, {K_DAY_OF_WEEK, false, "ZVK_ACCEPT_DAY_OF_WEEK", 1},
};

// Texts from outside the program that may not be there.
struct OutsideRow {
    std::string_view name, routine;
};

constexpr OutsideRow kOutsides[] = {
    {"ENVIRONMENT", emits(Do::AcceptEnvironment, Of::Text)},
    {"ENVIRONMENT-VALUE", emits(Do::AcceptEnvironmentValue, Of::Text)},
    {"COMMAND-LINE", emits(Do::AcceptCommandLine, Of::Text)},
    {"ARGUMENT-NUMBER", emits(Do::AcceptArgumentNumber, Of::Text)},
    {"ARGUMENT-VALUE", emits(Do::AcceptArgument, Of::Text)},
};

struct DeviceRow {
    std::string_view name, flags;
};

constexpr DeviceRow kInputs[] = {
    {"", "ZVK_ACCEPT_SYSIN"},           {"SYSIN", "ZVK_ACCEPT_SYSIN"},      {"SYSIPT", "ZVK_ACCEPT_SYSIN"},
    {"STDIN", "ZVK_ACCEPT_SYSIN"},      {"CONSOLE", "ZVK_ACCEPT_CONSOLE"},  {"CRT", "ZVK_ACCEPT_CONSOLE"},
    {"TERMINAL", "ZVK_ACCEPT_CONSOLE"}, {"KEYBOARD", "ZVK_ACCEPT_CONSOLE"},
};

} // namespace

void Emitter::acceptStatement(const AcceptStatement &s)
{
    if (!s.target) { // ACCEPT OMITTED
        put(emits(Do::Accept, Of::Text), "(ZVK_ACCEPT_SYSIN, 1, ", tempBytes(1), ");\n");
        return;
    }
    Loc loc = locate(*s.target, true);
    if (!loc.good()) return;
    Word from = s.from;
    for (const Mnemonic &m : program_->mnemonics)
        if (m.name == s.from && s.from) from = m.device;
    const std::string &name = wordText(from);

    for (const ClockRow &row : kClocks)
        if (row.from == from && row.longYear == s.longYear) return acceptClock(row.flags, row.digits, loc);
    for (const OutsideRow &row : kOutsides)
        if (row.name == name) return acceptOutside(s, row.routine, loc);
    for (const DeviceRow &row : kInputs)
        if (row.name == name) return acceptInput(s, row.flags, loc);
    if (from != s.from) // another device's mnemonic-name
        acceptInput(s, "ZVK_ACCEPT_CONSOLE", loc);
    else
        error(s.at, "there is no device " + name);
}

// Whether what is accepted is taken as a number: edited, or to the item's decimal places.
bool Emitter::acceptsNumber(const Loc &loc)
{
    return !loc.refmod && (isNumericItem(*loc.item) || loc.item->category == Category::NumericEdited);
}

// The date or the time, as if moved from an unsigned integer item.
void Emitter::acceptClock(std::string_view flags, int digits, const Loc &loc)
{
    std::string buffer = tempBytes(16);
    put(emits(Do::AcceptClock), "(", flags, ", ", digits, ", ", buffer, ");\n");
    if (acceptsNumber(loc)) {
        std::string number = cat(emits(Do::AcceptClockNumber, Of::ZonedUnsigned), "(", buffer, ", ", digits, ")");
        store(integerNumber(number, digits, false), loc, false, "");
        return;
    }
    Text t;
    t.address = buffer;
    t.length = cat(digits);
    t.fixed = digits;
    moveText(t, loc);
}

// A value of the environment or of the command line.
void Emitter::acceptOutside(const AcceptStatement &s, std::string_view routine, const Loc &loc)
{
    Text t;
    t.address = tempBytes(4096);
    t.length = temp("int");
    std::string name;
    if (s.name) {
        Text asked = text(s.name, true);
        name = cat(asked.address, ", ", asked.length, ", ");
    }
    put(t.length, " = ", routine, "(", name, t.address, ", 4096);\n");
    put("if (", t.length, " >= 0) {\n");
    if (acceptsNumber(loc))
        store(textNumber(t, loc.item->picture.scale), loc, false, "");
    else
        moveText(t, loc);
    if (s.exception.hasNot) block(s.exception.onNot);
    put("}\n");
    put("else {\n");
    if (s.exception.has) block(s.exception.on);
    put("}\n");
}

// A line of a device. ON EXCEPTION: there is no line any more.
void Emitter::acceptInput(const AcceptStatement &s, std::string_view flags, const Loc &loc)
{
    const bool phrases = s.exception.has || s.exception.hasNot;
    if (phrases) {
        put("if (", emits(Do::InputEnded), "()) {\n");
        if (s.exception.has) block(s.exception.on);
        put("} else {\n");
    }
    if (loc.refmod || !isNumericItem(*loc.item)) {
        put(emits(Do::Accept, Of::Text), "(", flags, ", ", loc.length, ", ", loc.address, ");\n");
    } else {
        // A number: a line of text, then its value.
        std::string buffer = tempBytes(64);
        put("memset(", buffer, ", ' ', 64);\n", emits(Do::Accept, Of::Text), "(", flags, ", 63, ", buffer, ");\n");
        Num n;
        n.kind = Num::Packed;
        n.digits = 36;
        n.scale = 18;
        std::string p = tempBytes(20);
        n.text = cat(emits(Do::AcceptNumber, Of::Packed), "(", buffer, ", 63, ", p, ", '",
                     program_->commaIsPoint ? ',' : '.', "')");
        store(n, loc, false, "");
    }
    if (!phrases) return;
    if (s.exception.hasNot) block(s.exception.onNot);
    put("}\n");
}

} // namespace kvrcob
