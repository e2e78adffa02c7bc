// Stores: files of all organizations whose bytes were damaged, through the file-system modules. The
// first byte chooses the kind, the next ones what is done; then come places and bytes to change, or
// where to cut, in a sound file.
#include <map>

#include "fuzz.h"
#include "support/compiled_file.h"

namespace {

struct Kind {
    const char *name;
    FileAttributes attributes;
};

const Kind kKinds[] = {
    {"lsq-store", {.longest = 40, .shortest = 1, .organization = ZVK_FILE_LINE_SEQUENTIAL}},
    {"rsd-store", {.longest = 40, .shortest = 1}},
    {"stl-store", {.longest = 40, .shortest = 40, .organization = ZVK_FILE_RELATIVE, .access = 0}},
    {"stl-store",
     {.longest = 20,
      .shortest = 20,
      .organization = ZVK_FILE_INDEXED,
      .access = 0,
      .keys = {{6, 0, 0, {}}, {4, 6, ZVK_FILE_KEY_DUPLICATES, {}}}}},
};

std::string contentOf(const std::string &path)
{
    std::string content;
    if (FILE *file = fopen(path.c_str(), "rb")) {
        char buffer[65536];
        for (size_t got; (got = fread(buffer, 1, sizeof buffer, file)) > 0;) content.append(buffer, got);
        fclose(file);
    }
    return content;
}

// The file's bytes as the module made them.
const std::string &sound(size_t kind)
{
    static std::map<size_t, std::string> made;
    auto found = made.find(kind);
    if (found != made.end()) return found->second;
    CompiledFile file(kKinds[kind].name, kKinds[kind].attributes);
    file.open(ZVK_OPEN_OUTPUT);
    for (uint64_t i = 1; i <= 30; i++) {
        char text[41];
        snprintf(text, sizeof text, "%06llu%04llurecord", static_cast<unsigned long long>(i),
                 static_cast<unsigned long long>(i % 7));
        file.write(text, {.relativeKey = i});
    }
    file.close();
    return made[kind] = contentOf(fuzz::scratch() + "/store");
}

void use(CompiledFile &file, fuzz::Input &input, uint16_t mode)
{
    if (file.open(mode) > "09") return;
    for (unsigned step = 0; step < 12; step++) {
        FileRequest request{};
        const uint8_t deed = input.take<uint8_t>();
        request.options = deed & 1 ? ZVK_REQUEST_NEXT : 0;
        request.relativeKey = deed >> 3;
        char key[12];
        snprintf(key, sizeof key, "%06u0001", deed >> 3);
        file.move(key);
        if ((deed & 6) == 2 && mode == ZVK_OPEN_IO)
            file.rewrite(key, request);
        else if ((deed & 6) == 4 && mode == ZVK_OPEN_IO)
            file.write(key, request);
        else if ((deed & 6) == 6 && mode == ZVK_OPEN_IO)
            file.verb(file.fcb->deleteRecord, request);
        else
            file.read(request);
    }
    file.close();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool ready = setenv("VFS_DURABILITY", "none", 1) == 0 && !fuzz::scratch().empty();
    if (!ready) abort();
    fuzz::Input input(data, size);
    const uint8_t first = input.take<uint8_t>();
    const size_t kind = first % std::size(kKinds);
    std::string content = sound(kind);
    if (first & 0x40) content.resize(content.size() * input.take<uint8_t>() / 255);
    const uint16_t mode = first & 0x80 ? ZVK_OPEN_IO : ZVK_OPEN_INPUT;
    const std::string deeds = input.bytes(12);
    while (input.left() && !content.empty()) {
        const uint32_t where = input.take<uint16_t>() | static_cast<uint32_t>(input.take<uint8_t>() & 3) << 16;
        content[where % content.size()] = static_cast<char>(input.take<uint8_t>());
    }
    fuzz::emptyScratch();
    fuzz::putFile(fuzz::scratch() + "/store", content.data(), content.size());
    // A record area and a program stay with the run unit; a process of its own lets them go.
    fuzz::inChild([&] {
        CompiledFile file(kKinds[kind].name, kKinds[kind].attributes);
        fuzz::Input steps(reinterpret_cast<const uint8_t *>(deeds.data()), deeds.size());
        use(file, steps, mode);
    });
    return 0;
}
