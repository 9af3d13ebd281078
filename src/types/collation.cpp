#include "types/collation.h"

#include <map>
#include <mutex>

#include "system/QuillonException.h"
#include "system/UnicodeUnits.h"
#include "types/BinaryCollation.h"
#include "types/ICUCollation.h"
#include "types/status.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// Written at start-up only. Collations are referred to by types, which live to the end of the process.
std::map<std::wstring, const collation*, std::less<>>& s_collations() {
    static std::map<std::wstring, const collation*, std::less<>> collations;
    return collations;
}

// A part of the text becomes the result: a view, unless both are one atom.
void assign_part(const usratom& text, usratom& result, uint64_t from, uint64_t to) {
    result.assign(text.type(), text.data() + from, to - from, &result != &text);
}

unsigned width_of(const usratom& text) {
    return static_cast<unsigned>(text.type()->scale());
}

}  // namespace

collation::~collation() = default;

void collation::define(const collation* added) {
    s_collations().insert_or_assign(added->name(), added);
}

std::vector<std::wstring> collation::names() {
    std::vector<std::wstring> all;
    for (const auto& [name, defined] : s_collations()) all.push_back(name);
    return all;
}

const collation* collation::resolve(std::wstring_view name) {
    const auto found = s_collations().find(name);
    if (found == s_collations().end()) {
        throw QVE_RangeError(status::collation_resolve, "collation::resolve: Unknown collation");
    }
    return found->second;
}

void collation::releaseAllLocal() {
    for (const auto& [name, defined] : s_collations()) defined->releaseLocal();
}

void collation::ltrim(const usratom& text, usratom& result) const {
    require_text(text, "collation::upper: Null argument");
    assign_part(text, result, Unicode::Units::SkipSpace(text.bytes(), width_of(text)), text.length());
}

void collation::rtrim(const usratom& text, usratom& result) const {
    require_text(text, "collation::upper: Null argument");
    assign_part(text, result, 0, Unicode::Units::SkipSpaceFromEnd(text.bytes(), width_of(text)));
}

void collation::trim(const usratom& text, usratom& result) const {
    require_text(text, "collation::upper: Null argument");
    const uint64_t from = Unicode::Units::SkipSpace(text.bytes(), width_of(text));
    const uint64_t to = Unicode::Units::SkipSpaceFromEnd(text.bytes(), width_of(text));
    assign_part(text, result, from, from < to ? to : from);
}

bool collation::compares_ascii_by_byte() const {
    return false;
}

const collation* collation::allocate() const {
    return this;
}
void collation::release(const collation*) const {}
void collation::releaseLocal() const {}

void define_collations() {
    static std::once_flag defined;
    std::call_once(defined, [] {
        static const BinaryCollation binary;
        collation::define(&binary);
        static std::vector<std::unique_ptr<collation>> locales;
        for (const ICUCollation::Builtin_row& row : ICUCollation::GetBuiltins()) {
            locales.push_back(ICUCollation::Builtin(row.name));
            collation::define(locales.back().get());
        }
    });
}

}  // namespace qve
