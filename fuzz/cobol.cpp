// kvrcob: any bytes as a COBOL source, up to the C text. Each input has a process of its own: the
// front end is made for one compilation.
#include <cstdio>

#include "cobol/emit/emitter.h"
#include "cobol/syntax/parser.h"
#include "cobol/text/preprocessor.h"
#include "fuzz.h"

static void compile(const std::string &path)
{
    using namespace kvrcob;
    if (!freopen("/dev/null", "w", stdout)) abort();
    diagnostics().sources = &sources();
    int file = sources().open(path, Spot{});
    if (file < 0) abort();
    std::vector<std::string> dependencies;
    auto *group = new Group();
    TextOptions text;
    group->tokens = readSource(static_cast<uint32_t>(file), text, CopyPath{}, dependencies);
    Parser(*group).parse();
    Meaning meaning(*group);
    meaning.analyse();
    Emitter emitter(meaning, EmitOptions{});
    emitter.emit();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = fuzz::scratch() + "/source.cbl";
    fuzz::putFile(path, data, size);
    fuzz::inChild([] { compile(path); });
    return 0;
}
