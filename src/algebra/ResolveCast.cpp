#include <algorithm>
#include <vector>

#include "algebra/CastExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"
#include "types/usrtype.h"
#include "types/varchar.h"

namespace qve {

namespace {

bool IsWhole(DataType type) {
    return type == DataType::boolean || type == DataType::index || type == DataType::integer;
}

bool IsText(const usrtype& type) {
    return dynamic_cast<const varchar*>(&type) != nullptr;
}

// Of two numeric types, where neither is the other.
const usrtype* CommonNumber(const usrtype& a, const usrtype& b) {
    const usrtype& wide = a.size() >= b.size() ? a : b;
    if (!IsWhole(a.GetDataType()) || !IsWhole(b.GetDataType())) {
        const usrtype& whole = IsWhole(a.GetDataType()) ? a : b;
        const bool exactAsFloat = wide.size() <= 4 && (!IsWhole(whole.GetDataType()) || whole.size() < 4);
        return exactAsFloat ? builtin::usrtypeof<float>() : builtin::usrtypeof<double>();
    }
    if (a.GetDataType() == DataType::boolean) return &b;
    if (b.GetDataType() == DataType::boolean) return &a;
    if (a.GetDataType() == b.GetDataType()) return &wide;
    // An unsigned value needs a bit more than the signed type of its width has.
    const usrtype& unsignedType = a.GetDataType() == DataType::index ? a : b;
    const uint64_t needed = std::max<uint64_t>(2 * unsignedType.size(), &unsignedType == &a ? b.size() : a.size());
    if (needed <= 2) return builtin::usrtypeof<short>();
    return needed <= 4 ? builtin::usrtypeof<int>() : builtin::usrtypeof<long long>();
}

bool IsNumber(const usrtype& type) {
    return IsWhole(type.GetDataType()) || type.GetDataType() == DataType::real;
}

bool IsDay(const usrtype& type) {
    return type.GetDataType() == DataType::date || type.GetDataType() == DataType::datetime;
}

RefCntPtr<Exp> CastTo(const RefCntPtr<Exp>& exp, const usrtype* type) {
    if (exp->GetColumn()->GetType() == type) return exp;
    return MakeRef<CastExp>(exp->GetName(), exp, MakeRef<ConstantExp>(type->null()));
}

}  // namespace

const usrtype* CommonType(const usrprops& a, const usrprops& b) {
    const usrtype* left = usrtype::resolve(a);
    const usrtype* right = usrtype::resolve(b);
    if (left == right) return left;
    if (IsText(*left) && IsText(*right)) {
        const std::vector<const usrtype*> both{left, right};
        return varchar::maxtype(both.begin(), both.end());
    }
    if (IsNumber(*left) && IsNumber(*right)) return CommonNumber(*left, *right);
    if (IsDay(*left) && IsDay(*right)) return builtin::usrtypeof<datetime>();
    throw QVE_InvalidArgument(status::ResolveCast, narrow(L"ResolveCast: " + left->name() + L", " + right->name()));
}

std::pair<RefCntPtr<Exp>, RefCntPtr<Exp>> ResolveCast(RefCntPtr<Exp> a, RefCntPtr<Exp> b) {
    const usrtype* common = CommonType(a->GetProperties(), b->GetProperties());
    return {CastTo(a, common), CastTo(b, common)};
}

}  // namespace qve
