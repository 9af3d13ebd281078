#include "algebra/MakeCall.h"

#include "algebra/AggrExp.h"
#include "algebra/MapExp.h"
#include "algebra/SelectExp.h"

namespace qve {
namespace {

const std::wstring anonymous;

}  // namespace

RefCntPtr<Exp> MakeMapCall(const std::wstring& op, const Exp::Arguments& a) {
    // A hash that a client sees is of the value: equal values of two columns have one hash, whatever their tokens.
    const bool tokens = op != L"hash";
    switch (a.size()) {
        case 0:
            return MakeRef<MapNullaryExp>(anonymous, op);
        case 1:
            return MakeRef<MapUnaryExp>(anonymous, op, a[0], tokens);
        case 2:
            return MakeRef<MapBinaryExp>(anonymous, op, a[0], a[1]);
        case 3:
            return MakeRef<MapTrinaryExp>(anonymous, op, a[0], a[1], a[2]);
        default:
            return nullptr;
    }
}

RefCntPtr<Exp> MakeSelectCall(const std::wstring& op, const Exp::Arguments& a) {
    switch (a.size()) {
        case 1:
            return MakeRef<SelectUnaryExp>(op, a[0]);
        case 2:
            return MakeRef<SelectBinaryExp>(op, a[0], a[1]);
        case 3:
            return MakeRef<SelectTrinaryExp>(op, a[0], a[1], a[2]);
        default:
            return nullptr;
    }
}

RefCntPtr<Exp> MakeAggregateCall(const std::wstring& op, const Exp::Arguments& a) {
    switch (a.size()) {
        case 0:
            return MakeRef<AggrUnaryExp>(anonymous, op);
        case 1:
            return MakeRef<AggrBinaryExp>(anonymous, op, a[0]);
        case 2:
            return MakeRef<AggrTrinaryExp>(anonymous, op, a[0], a[1]);
        default:
            return nullptr;
    }
}

}  // namespace qve
