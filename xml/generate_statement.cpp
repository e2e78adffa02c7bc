// XML GENERATE: the walk through the source item, and the document that it writes.
//
//     01 ORDER.                    nodes: 1 group  2 numeric, attribute  2 control 2  2 leaf
//       02 NO    PIC 9(4).         names: ORDER NO ITEM
//       02 ITEM  PIC X(5) OCCURS 2.
//
//     <ORDER NO="12"><ITEM>pen</ITEM><ITEM>ink</ITEM></ORDER>
//
// The walk has a cursor each in the nodes, the names, the source item and the edited numbers. A
// group that repeats sends the first two back to its node; the other two only go forward.
#include "xml/generate_markup.h"
#include "xml/generate_pieces.h"
#include "xml/generate_source.h"

namespace xml {

template <class Unit>
bool Generator<Unit>::prepare(uint32_t textBuffer)
{
    return wideText_.reserve(std::max(textBuffer, kLeastBuffer)) || fail(kNoBuffers);
}

template <class Unit>
bool Generator<Unit>::document(const GenerateNode *nodes, const uint8_t *names, const uint8_t *source,
                               const uint8_t *edited, const uint64_t *depending)
{
    Cursors cursors{nodes, names + 1 + *names, source, edited, 1};
    return declaration() && interfaceTag(names, false) && walk(cursors, depending) && interfaceTag(names, true);
}

template <class Unit>
bool Generator<Unit>::walk(Cursors &c, const uint64_t *depending)
{
    for (;;) {
        const GenerateNode &node = *c.node;
        if (node.level != 0 && (node.flags & ZVK_XML_NODE_CONTROL) == ZVK_XML_NODE_CONTROL) {
            bool byTable = (node.flags & ZVK_XML_NODE_DEPENDING) == ZVK_XML_NODE_DEPENDING;
            c.repeat = byTable ? depending[node.count] : node.count;
            c.node++;
            continue;
        }

        bool again = false;
        if (!closeGroups(c, node.level, again)) return false;
        if (again) continue;
        if (node.level == 0) return true;
        if (!leaves(c)) return false;
        c.node++;
        c.repeat = 1;
    }
}

// Ends the open groups that a node of this level is not inside. One that repeats is begun again
// instead: the cursors are on its node then.
template <class Unit>
bool Generator<Unit>::closeGroups(Cursors &c, uint8_t level, bool &again)
{
    while (depth_ > 0 && level <= groups_[depth_ - 1].node->level) {
        OpenGroup &group = groups_[--depth_];
        if (group.tagged && !endTag(group.tagName, group.tagNameEnd)) return false;
        if (group.absent) absent_ = false;
        if (group.remaining > 1) {
            c.node = group.node;
            c.name = group.name;
            c.repeat = group.remaining - 1;
            again = true;
            return true;
        }
    }
    return true;
}

// The node at the cursor: begins a group, or writes a leaf as often as it occurs.
template <class Unit>
bool Generator<Unit>::leaves(Cursors &c)
{
    const GenerateNode &node = *c.node;
    bool numeric = node.flags & ZVK_XML_NODE_NUMERIC;
    bool skipped = (node.flags >> 4 & (numeric ? 3 : 7)) == ZVK_XML_CLASS_SKIPPED;
    uint64_t length = numeric ? node.numeric.storageLength : node.length;
    uint64_t editedLength = numeric ? node.numeric.editedLength : 0;
    uint64_t repeat = absent_ ? 0 : c.repeat;
    if (skipped) {
        c.data += length * repeat;
        c.edited += editedLength * repeat;
        return true;
    }

    const uint8_t *name = c.name;
    c.name += 1 + *name;
    if (!numeric && length == 0) {
        bool tagged = repeat > 0 && !(node.flags & ZVK_XML_NODE_UNTAGGED);
        if (tagged && !startTag(name, false)) return false;
        groups_[depth_++] = {&node, name, repeat, tagged, !absent_ && repeat == 0, tagName_, tagNameEnd_};
        if (repeat == 0) absent_ = true;
        return true;
    }
    for (; repeat > 0; repeat--) {
        SourceText text{};
        if (!leafText(node, c.data, c.edited, text) || !leaf(node, name, text)) return false;
        c.data += length;
        c.edited += editedLength;
    }
    return true;
}

template <class Unit>
static int32_t generate(const GenerateEncoding &encoding, const XmlGenerateOptions *options, void *receiver,
                        uint32_t capacity, uint32_t textBuffer, const GenerateNode *nodes, const uint8_t *names,
                        const void *source, const void *editArea, const uint64_t *depending, uint32_t *result)
{
    Generator<Unit> generator(encoding, options, receiver, capacity);
    bool complete =
        generator.prepare(textBuffer) && generator.document(nodes, names, static_cast<const uint8_t *>(source),
                                                            static_cast<const uint8_t *>(editArea), depending);
    if (result) *result = generator.written();
    return complete ? generator.warning() : generator.code();
}

} // namespace xml

extern "C" {

int32_t _zvkcXGF(uint32_t, void *receiver, uint32_t capacity, uint32_t receiverClass, const void *source,
                 const XmlConversionContext *context, const void *editArea, const uint64_t *depending, uint64_t,
                 uint32_t textBuffer, const GenerateNode *nodes, const uint8_t *names,
                 const XmlGenerateOptions *options, uint32_t, uint32_t *result)
{
    if (result) *result = 0;
    if (options && options->version > xml::kHighestVersion) return xml::kVersionUnknown;
    receiverClass &= 0xFF;
    GenerateEncoding encoding{};
    if (int32_t code = zvkChooseEncoding(options, receiverClass, context, encoding)) return code;
    auto run = zvkTargetOf(*encoding.document) == Target::Utf16 ? xml::generate<uint16_t> : xml::generate<uint8_t>;
    return run(encoding, options, receiver, capacity, textBuffer, nodes, names, source, editArea, depending, result);
}
}
