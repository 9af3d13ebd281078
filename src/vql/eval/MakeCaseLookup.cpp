#include "vql/eval/MakeCaseLookup.h"

#include <algorithm>
#include <set>

#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/ExpVisitorImpl.h"
#include "algebra/LookupExp.h"
#include "algebra/PrimitiveExp.h"
#include "algebra/Table.h"
#include "algebra/exact_cast.h"
#include "storage/Column.h"
#include "types/usrtype.h"
#include "types/varchar.h"

namespace qve {
namespace {

const std::wstring anonymous;

// Values from which on a lookup is faster than comparing with one after the other.
constexpr size_t leastValues = 8;

// Where the language's "=" is the equality of keys: real numbers have two zeros, and NaN.
bool IsKeyType(DataType type) {
    return type != DataType::real && type != DataType::spatial;
}

// The columns of a condition, each once; and whether all comparisons are such as keys make.
class ConditionColumns : public ExpVisitorImpl {
public:
    void VisitColumnExp(ColumnExp& exp) override {
        names.insert(exp.GetColumnName());
        columns.emplace_back(&exp);
        suits = suits && IsKeyType(exp.GetDataType());
    }
    // The left text's collation decides: it must be the column's.
    void VisitPrimitiveExp(PrimitiveExp& exp) override {
        const Exp::Arguments& arguments = exp.GetArguments();
        if (arguments.size() == 2 && exp.GetOperation() == L"eq") {
            suits = suits && arguments[0]->GetDataType() == arguments[1]->GetDataType();
            const bool text = arguments[0]->GetDataType() == DataType::usr;
            if (text && !dynamic_cast<const ColumnExp*>(arguments[0].get())) suits = false;
        }
        if (suits) VisitArguments(exp);
    }

    std::set<std::wstring> names;
    Exp::Arguments columns;
    bool suits = true;
};

// The constants that the case may give, in the type they have in common; null unless all are constants.
const usrtype* ResultType(const Exp::Arguments& arguments) {
    const usrtype* common = nullptr;
    for (size_t i = 1; i < arguments.size() + 1; i += 2) {
        const Exp& value = *arguments[std::min(i, arguments.size() - 1)];
        const auto* constant = dynamic_cast<const ConstantExp*>(&value);
        if (!constant || constant->GetValueCount() != 1) return nullptr;
        if (constant->IsNull()) continue;
        const usrprops& properties = constant->GetProperties();
        common = common ? CommonType(common->properties(), properties) : usrtype::resolve(properties);
    }
    return common;
}

usratom AsResult(const Exp& value, const usrtype& type) {
    const auto& constant = static_cast<const ConstantExp&>(value);
    return constant.IsNull() ? usratom() : CastConstant(constant, type.properties())->GetValue();
}

}  // namespace

RefCntPtr<Exp> MakeCaseLookup(const Exp::Arguments& arguments) {
    if (arguments.size() % 2 == 0 || arguments.size() < 3) return nullptr;
    ConditionColumns all;
    for (size_t i = 0; i + 1 < arguments.size(); i += 2) arguments[i]->Accept(all);
    if (!all.suits || all.names.empty()) return nullptr;
    const std::vector<std::wstring> names(all.names.begin(), all.names.end());
    std::vector<SumOfProducts> conditions;
    size_t values = 0;
    for (size_t i = 0; i + 1 < arguments.size(); i += 2) {
        std::optional<SumOfProducts> condition = SumOfProducts::Find(*arguments[i], names);
        if (!condition) return nullptr;
        values += condition->products.size();
        conditions.push_back(std::move(*condition));
    }
    const usrtype* type = values < leastValues ? nullptr : ResultType(arguments);
    if (!type) return nullptr;

    Exp::Arguments keys;
    std::vector<const usrtype*> types;
    for (const std::wstring& name : names) {
        const auto found = std::find_if(all.columns.begin(), all.columns.end(), [&name](const auto& column) {
            return static_cast<const ColumnExp&>(*column).GetColumnName() == name;
        });
        keys.push_back(*found);
        types.push_back((*found)->GetColumn()->GetType());
    }
    LookupTable table(types, type);
    bool hasRows = false;
    for (size_t i = 0; i < conditions.size(); ++i) {
        for (const SumOfProducts::Product& product : conditions[i].products) {
            std::vector<usratom> row;
            bool possible = true;
            for (size_t k = 0; k < product.size(); ++k) {
                row.push_back(product[k].type() ? exact_cast(product[k], *types[k]) : usratom());
                possible = possible && (!product[k].type() || row.back().type());
            }
            row.push_back(AsResult(*arguments[2 * i + 1], *type));
            if (possible) table.Add(row);
            hasRows = hasRows || possible;
        }
    }
    if (!hasRows) return nullptr;
    return MakeRef<LookupExp>(anonymous, std::move(keys), table.Finish(), AsResult(*arguments.back(), *type));
}

}  // namespace qve
