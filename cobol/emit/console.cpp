// DISPLAY, ACCEPT.
//
// A number is shown as its digits: a minus sign in front where it has a sign and is negative, the
// decimal point where it has places. Zoned items whose sign is part of a digit are shown likewise;
// those with a separate sign as they are.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::displayStatement(const DisplayStatement &s)
{
    const char *device = "ZVK_DISPLAY_SYSOUT";
    if (s.upon) {
        Word name = s.upon;
        for (const Mnemonic &m : program_->mnemonics)
            if (m.name == s.upon) name = m.device;
        const std::string &text = wordText(name);
        if (name == K_ENVIRONMENT) { // SET ENVIRONMENT name TO value
            Text variable = this->text(s.items[0], true);
            put(cat(emits(Do::DisplayEnvironmentName, Of::Text), "(", variable.address, ", ", variable.length, ");\n"));
            Text value = this->text(s.items[1], true);
            put(cat(emits(Do::DisplayEnvironmentValue, Of::Text), "(", value.address, ", ", value.length, ");\n"));
            return;
        }
        if (text == "CONSOLE" || text == "CRT" || text == "TERMINAL")
            device = "ZVK_DISPLAY_CONSOLE";
        else if (text == "SYSPUNCH" || text == "SYSPCH")
            device = "ZVK_DISPLAY_SYSPUNCH";
        else if (text == "SYSERR" || text == "STDERR")
            device = "KVR_DISPLAY_ERROR";
        else if (text == "ENVIRONMENT-NAME" || text == "ENVIRONMENT-VALUE" || text == "ARGUMENT-NUMBER" ||
                 text == "COMMAND-LINE") {
            if (text == "ENVIRONMENT-NAME" || text == "ENVIRONMENT-VALUE") {
                Text t = this->text(s.items[0], true);
                put(cat(text == "ENVIRONMENT-NAME" ? emits(Do::DisplayEnvironmentName, Of::Text)
                                                   : emits(Do::DisplayEnvironmentValue, Of::Text),
                        "(", t.address, ", ", t.length, ");\n"));
                return;
            }
            if (text == "ARGUMENT-NUMBER") {
                put(cat("kvr_next_argument = (int)", integer(s.items[0]), ";\n"));
                return;
            }
            notBuilt(s.uponAt, "DISPLAY UPON " + text);
            return;
        } else if (text == "SYSOUT" || text == "SYSLST" || text == "SYSLIST" || text == "STDOUT" || text == "PRINTER" ||
                   name != s.upon) {
            device = "ZVK_DISPLAY_SYSOUT";
        } else {
            error(s.uponAt, "there is no device " + text);
            return;
        }
    }
    std::string items = temp("DisplayItem", cat("[", s.items.size(), "]"));
    size_t i = 0;
    for (const Expr *original : s.items) {
        const Expr *e = constant(original);
        std::string address, size;
        bool numeric = isNumericExpr(e) && e->kind != ExprKind::Number;
        if (e->kind == ExprKind::Number) {
            // As it is written.
            address = bytesLiteral(e->text);
            size = cat(e->text.size());
        } else if (e->kind == ExprKind::Negate && e->left->kind == ExprKind::Number) {
            std::string t = "-" + std::string(e->left->text);
            address = bytesLiteral(t);
            size = cat(t.size());
        } else if (numeric) {
            const Item *item = e->kind == ExprKind::Reference ? meaning_.resolve(*program_, *e->ref) : nullptr;
            Loc loc = item ? locate(*e->ref) : Loc{};
            if (e->kind == ExprKind::Function && userFunction(e) && callFunction(e, loc)) item = loc.item;
            if (item && !loc.good()) return;
            if (item && item->usage == Usage::Display &&
                (item->signForm == SignForm::LeadingSeparate || item->signForm == SignForm::TrailingSeparate ||
                 item->signForm == SignForm::None) &&
                item->picture.scale == 0) {
                address = loc.address;
                size = loc.length;
            } else {
                Num n = item ? itemNumber(loc) : number(e);
                if (!n.good()) return;
                if (n.kind == Num::Float) {
                    std::string buffer = tempBytes(48), length = temp("int");
                    put(cat(length, " = ", emits(Do::Show, Of::Float), "(", n.text, ", ", buffer, ", ",
                            item && item->usage == Usage::Float ? 7 : 15, ");\n"));
                    address = buffer;
                    size = length;
                } else {
                    int digits = n.digits;
                    if (item && (item->usage == Usage::Native || item->usage == Usage::Index || item->nativeBinary ||
                                 item->isIndexName)) {
                        digits = item->isIndexName             ? 9
                                 : item->usage == Usage::Index ? 9
                                 : item->nativeBinary          ? item->picture.digits
                                                               : (item->size == 2   ? 5
                                                                  : item->size == 4 ? 10
                                                                  : item->size == 8 ? 19
                                                                                    : 3);
                        if (item->usage == Usage::Native && !item->nativeBinary)
                            digits = item->picture.digits > digits ? item->picture.digits : digits;
                        if (item->specialKind) digits = item->picture.digits;
                    } else if (item) {
                        digits = item->picture.digits;
                    }
                    bool isSigned = n.isSigned;
                    int showSign = item ? (isSigned ? (item->usage == Usage::Display && false ? 2 : 1) : 0) : 2;
                    bool computed = !item;
                    if (n.scale < 0) {
                        n = scaleUp(n, 0);
                        digits = n.digits;
                    }
                    n = toPacked(n);
                    int places = n.scale;
                    std::string buffer = tempBytes(digits + places + 8), length = temp("int");
                    if (computed) {
                        put(cat(length, " = ", emits(Do::Show, Of::Packed), "(", n.text, ", ", n.digits, ", ", n.digits,
                                ", ", places, ", 2, '", program_->commaIsPoint ? ',' : '.', "', ", buffer, ");\n"));
                    } else {
                        if (digits > n.digits) {
                            std::string wider = tempBytes(digits / 2 + 1);
                            n.text = cat(emits(Do::WidenShown, Of::Packed), "(", n.text, ", ", wider, ", ", digits,
                                         ", ", n.digits, ")");
                            n.digits = digits;
                        }
                        put(cat(length, " = ", emits(Do::Show, Of::Packed), "(", n.text, ", ", n.digits, ", ", digits,
                                ", ", places, ", ", showSign, ", '", program_->commaIsPoint ? ',' : '.', "', ", buffer,
                                ");\n"));
                    }
                    address = buffer;
                    size = length;
                }
            }
        } else if (categoryOf(e) == Category::Pointer && e->kind == ExprKind::Reference) {
            Loc loc = locate(*e->ref);
            std::string buffer = tempBytes(24), length = temp("int");
            put(cat(length, " = ", emits(Do::Show, Of::Pointer), "(", loc.address, ", ", buffer, ");\n"));
            address = buffer, size = length;
        } else {
            Text t = text(e);
            if (!t.good) return;
            if (t.fixed < 0) {
                std::string a = temp("const uint8_t *"), l = temp("uint64_t");
                put(cat(a, " = ", t.address, "; ", l, " = (uint64_t)", t.length, ";\n"));
                address = a, size = l;
            } else {
                address = t.address, size = t.length;
            }
        }
        put(cat(items, "[", i, "] = (DisplayItem){", address, ", ", size, ", ", size, ", ZVK_DISPLAY_TEXT, 0};\n"));
        i++;
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
