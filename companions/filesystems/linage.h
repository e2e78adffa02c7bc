// LINAGE: the page of a line sequential file.
//
//     top margin | body, its last lines the footing area | bottom margin
//
// The counter is the line of the body that the next record BEFORE, or the last one AFTER
// ADVANCING, stands on. A record BEFORE ADVANCING that follows one AFTER takes the line after it;
// the counter goes on by what ADVANCING says, and the paper waits for it. A record that leaves the
// body turns the page: the rest of the body, the bottom margin and the next top margin go out as
// lines, and the counter is 1 again; the first page's top margin goes out with the first record.
// Pages are plain lines: a page of 60 lines with margins of 3 takes 66.
#pragma once

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

struct LinagePlace {
    uint32_t body; // lines of the page being written
    uint32_t counter;
};

struct LinageStep {
    uint32_t lines;    // that go out
    LinagePlace place; // afterwards
    bool endOfPage;    // AT END-OF-PAGE: the footing area or a new page was reached
};

inline LinagePlace linagePlace(const FCB *fcb) { return {fcb->linagePage, fcb->linageCounter}; }

inline bool startLinage(FCB *fcb, const FIB *fib)
{
    const FileLinageGroup *group =
        reinterpret_cast<const FileLinageGroup *>(reinterpret_cast<const uint8_t *>(fib) + fib->linageOffset);
    fcb->linageBody = group[0].value;
    fcb->linageFooting = fib->linage & ZVK_FILE_LINAGE_FOOTING ? group[1].value : 0;
    fcb->linageTop = fib->linage & ZVK_FILE_LINAGE_TOP ? group[2].value : 0;
    fcb->linageBottom = fib->linage & ZVK_FILE_LINAGE_BOTTOM ? group[3].value : 0;
    constexpr uint32_t most = 65535;
    if (fcb->linageBody == 0 || fcb->linageBody > most || fcb->linageFooting > fcb->linageBody ||
        fcb->linageTop > most || fcb->linageBottom > most)
        return fail(fcb, 30, fs2Linage);
    return true;
}

// A step of so many lines, or to the next page, from `place`.
inline LinageStep linageStep(const FCB *fcb, const LinagePlace &place, bool page, uint32_t lines)
{
    const uint32_t body = place.body, counter = place.counter;
    if (!page && counter + lines <= body) {
        bool footing = fcb->linageFooting && counter + lines >= fcb->linageFooting;
        return {lines, {body, counter + lines}, footing};
    }
    uint32_t rest = counter <= body ? body - counter + 1 : 1;
    return {rest + fcb->linageBottom + fcb->linageTop, {fcb->linageBody, 1}, !page};
}

inline void takeLinageStep(FCB *fcb, const LinageStep &step)
{
    fcb->linagePage = step.place.body;
    fcb->linageCounter = step.place.counter;
}

} // namespace filesystems
