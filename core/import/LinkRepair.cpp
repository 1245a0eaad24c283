#include "core/import/LinkRepair.h"

#include "core/body/CanonicalBody.h"
#include "core/body/HTMLNode.h"
#include "core/import/ImportRun.h"
#include "core/import/ReferenceRewriter.h"
#include "core/store/StoreContext.h"

namespace tesserine {
namespace {

/// Points links elsewhere, in a body that is in the library.
class RepairedLinks final : public ReferenceResolver {
public:
    explicit RepairedLinks(const std::vector<NoteLinks::Repair>& repairs) : repairs_(repairs) {}

    ReferenceChange picture(std::string_view) override { return {}; }
    ReferenceChange link(std::string_view address) override {
        for (const auto& [expected, actual] : repairs_) {
            if (address != NoteService::noteURL(expected)) continue;
            if (!actual) return {ReferenceChange::Kind::text};
            return {ReferenceChange::Kind::address, NoteService::noteURL(*actual)};
        }
        return {};
    }

private:
    const std::vector<NoteLinks::Repair>& repairs_;
};

}  // namespace

void repairLinks(StoreContext& context, ImportRun& run, NoteLinks& links) {
    std::size_t pending = 0;
    for (const auto& [id, repairs] : links.takeRepairs()) {
        auto* note = context.find<CDNote>(id);
        if (note == nullptr || !note->html) continue;
        RepairedLinks repaired(repairs);
        const HTMLDocument body = HTMLDocument::parse(*note->html);
        note->html =
            canonicalBody(withResolvedReferences(body, repaired, BodyOrigin::library)).html;
        if (++pending % ImportRun::notesPerBatch == 0) run.save();
    }
}

}  // namespace tesserine
