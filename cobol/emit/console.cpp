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
    auto setEnvironment = [&](const char *routine, const Expr *e) {
        Text t = this->text(e, true);
        put(cat(routine, "(", t.address, ", ", t.length, ");\n"));
        return nullptr;
    };
    const char *setName = emits(Do::DisplayEnvironmentName, Of::Text);
    const char *setValue = emits(Do::DisplayEnvironmentValue, Of::Text);
    if (name == K_ENVIRONMENT) { // SET ENVIRONMENT name TO value
        setEnvironment(setName, s.items[0]);
        return setEnvironment(setValue, s.items[1]);
    }
    if (text == "ENVIRONMENT-NAME") return setEnvironment(setName, s.items[0]);
    if (text == "ENVIRONMENT-VALUE") return setEnvironment(setValue, s.items[0]);
    if (text == "ARGUMENT-NUMBER") {
        put(cat("kvr_next_argument = (int)", integer(s.items[0]), ";\n"));
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
        put(cat(length, " = ", emits(Do::Show, Of::Float), "(", n.text, ", ", out.address, ", ",
                item && item->usage == Usage::Float ? 7 : 15, ", '", program_->commaIsPoint ? ',' : '.', "');\n"));
        return true;
    }
    int digits = item ? shownDigits(*item) : n.digits, sign = item ? n.isSigned : 2;
    if (n.scale < 0) {
        n = scaleUp(n, 0);
        digits = n.digits;
    }
    n = toPacked(n);
    out.address = tempBytes(digits + n.scale + 8);
    out.size = length = temp("int");
    if (!item) digits = n.digits;
    if (digits > n.digits) {
        std::string wider = tempBytes(digits / 2 + 1);
        n.text = cat(emits(Do::WidenShown, Of::Packed), "(", n.text, ", ", wider, ", ", digits, ", ", n.digits, ")");
        n.digits = digits;
    }
    put(cat(length, " = ", emits(Do::Show, Of::Packed), "(", n.text, ", ", n.digits, ", ", digits, ", ", n.scale, ", ",
            sign, ", '", program_->commaIsPoint ? ',' : '.', "', ", out.address, ");\n"));
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
        put(cat(out.size, " = ", emits(Do::Show, Of::Pointer), "(", loc.address, ", ", out.address, ");\n"));
        return true;
    }
    Text t = text(e);
    if (!t.good) return false;
    out = {t.address, t.length};
    if (t.fixed < 0) {
        out = {temp("const uint8_t *"), temp("uint64_t")};
        put(cat(out.address, " = ", t.address, "; ", out.size, " = (uint64_t)", t.length, ";\n"));
    }
    return true;
}

// EXHIBIT CHANGED. What each item has shown is kept: its length (4 bytes) and up to 252 bytes.
void Emitter::exhibitChanged(const DisplayStatement &s)
{
    const std::string kept = cat("exhibited", ++constants_), items = temp("DisplayItem", cat("[", s.items.size(), "]")),
                      count = temp("int");
    globals_ += cat("static uint8_t ", kept, "[", s.exhibited.size(), "][256];\n");
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
        put(cat(items, "[", i, "] = (DisplayItem){", shown.address, ", ", shown.size, ", ", shown.size,
                ", ZVK_DISPLAY_TEXT, 0};\n"));
    }
    put(cat(emits(Do::Display, Of::Text), "(", items, ", ", s.items.size(), ", ", device, ", ", s.noAdvancing ? 1 : 0,
            ");\n"));
    if (s.exception.hasNot) block(s.exception.onNot);
}

void Emitter::acceptStatement(const AcceptStatement &s)
{
    if (!s.target) { // ACCEPT OMITTED
        put(cat(emits(Do::Accept, Of::Text), "(ZVK_ACCEPT_SYSIN, 1, ", tempBytes(1), ");\n"));
        return;
    }
    Loc loc = locate(*s.target, true);
    if (!loc.good()) return;
    Word from = s.from;
    for (const Mnemonic &m : program_->mnemonics)
        if (m.name == s.from && s.from) from = m.device;
    const std::string &name = wordText(from);
    bool clock = false;
    int clockDigits = 0;
    std::string flags;
    if (from == K_DATE)
        flags = s.longYear ? "ZVK_ACCEPT_DATE | ZVK_ACCEPT_LONG_YEAR" : "ZVK_ACCEPT_DATE", clock = true,
        clockDigits = s.longYear ? 8 : 6;
    else if (from == K_DAY)
        flags = s.longYear ? "ZVK_ACCEPT_DAY | ZVK_ACCEPT_LONG_YEAR" : "ZVK_ACCEPT_DAY", clock = true,
        clockDigits = s.longYear ? 7 : 5;
    else if (from == K_TIME)
        flags = "ZVK_ACCEPT_TIME", clock = true, clockDigits = 8;
    else if (from == K_DAY_OF_WEEK)
        flags = "ZVK_ACCEPT_DAY_OF_WEEK", clock = true, clockDigits = 1;
    else if (from == K_ENVIRONMENT || name == "ENVIRONMENT-VALUE" || name == "COMMAND-LINE" ||
             name == "ARGUMENT-NUMBER" || name == "ARGUMENT-VALUE") {
        std::string buffer = tempBytes(4096), length = temp("int"), call;
        if (from == K_ENVIRONMENT) {
            Text t = text(s.name, true);
            call = cat(emits(Do::AcceptEnvironment, Of::Text), "(", t.address, ", ", t.length, ", ", buffer, ", 4096)");
        } else if (name == "ENVIRONMENT-VALUE")
            call = cat(emits(Do::AcceptEnvironmentValue, Of::Text), "(", buffer, ", 4096)");
        else if (name == "COMMAND-LINE")
            call = cat(emits(Do::AcceptCommandLine, Of::Text), "(", buffer, ", 4096)");
        else if (name == "ARGUMENT-NUMBER")
            call = cat(emits(Do::AcceptArgumentNumber, Of::Text), "(", buffer, ", 4096)");
        else
            call = cat(emits(Do::AcceptArgument, Of::Text), "(", buffer, ", 4096)");
        put(cat(length, " = ", call, ";\n"));
        put(cat("if (", length, " >= 0) {\n"));
        bool numericTo = !loc.refmod && (isNumericItem(*loc.item) || loc.item->category == Category::NumericEdited);
        if (numericTo) {
            Text t;
            t.address = buffer;
            t.length = length;
            store(textNumber(t, loc.item->picture.scale), loc, false, "");
        } else {
            Text t;
            t.address = buffer;
            t.length = length;
            moveText(t, loc);
        }
        if (s.exception.hasNot) block(s.exception.onNot);
        put("}\n");
        put("else {\n");
        if (s.exception.has) block(s.exception.on);
        put("}\n");
        return;
    } else if (from == 0 || name == "SYSIN" || name == "SYSIPT" || name == "STDIN") {
        flags = "ZVK_ACCEPT_SYSIN";
    } else if (name == "CONSOLE" || name == "CRT" || name == "TERMINAL" || name == "KEYBOARD" || from != s.from) {
        flags = "ZVK_ACCEPT_CONSOLE";
    } else {
        error(s.at, "there is no device " + name);
        return;
    }
    if (clock) {
        // As if moved from an unsigned integer item.
        std::string buffer = tempBytes(16);
        put(cat(emits(Do::AcceptClock), "(", flags, ", ", clockDigits, ", ", buffer, ");\n"));
        bool plain = loc.refmod || loc.item->category == Category::Group;
        if (!plain && (isNumericItem(*loc.item) || loc.item->category == Category::NumericEdited)) {
            Num n =
                integerNumber(cat(emits(Do::AcceptClockNumber, Of::ZonedUnsigned), "(", buffer, ", ", clockDigits, ")"),
                              clockDigits, false);
            store(n, loc, false, "");
        } else {
            Text t;
            t.address = buffer;
            t.length = cat(clockDigits);
            t.fixed = clockDigits;
            moveText(t, loc);
        }
        return;
    }
    // ON EXCEPTION: there is no line any more.
    bool phrases = s.exception.has || s.exception.hasNot;
    if (phrases) {
        put(cat("if (", emits(Do::InputEnded), "()) {\n"));
        if (s.exception.has) block(s.exception.on);
        put("} else {\n");
    }
    bool plain = loc.refmod || !isNumericItem(*loc.item);
    if (plain) {
        put(cat(emits(Do::Accept, Of::Text), "(", flags, ", ", loc.length, ", ", loc.address, ");\n"));
    } else {
        // A number: a line of text, then its value.
        std::string buffer = tempBytes(64);
        put(cat("memset(", buffer, ", ' ', 64);\n", emits(Do::Accept, Of::Text), "(", flags, ", 63, ", buffer, ");\n"));
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
