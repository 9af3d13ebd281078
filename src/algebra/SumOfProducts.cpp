#include "algebra/SumOfProducts.h"

#include <algorithm>

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "types/usrtype.h"

namespace qve {
namespace {

enum class Level { sum, product, comparison };

// Reads a condition from the top; the first fault ends it.
class Reader : private ExpVisitor {
public:
    explicit Reader(const std::vector<std::wstring>& columns) : m_columns(columns) {}

    void Read(Exp& condition) {
        m_level = Level::sum;
        ReadProduct(condition);
    }
    const char* Fault() const { return m_fault; }
    std::vector<SumOfProducts::Product> TakeProducts() { return std::move(m_products); }

private:
    void VisitPrimitiveExp(PrimitiveExp& exp) override {
        const std::wstring& op = exp.GetOperation();
        if (op == BooleanExp::opOr) return ReadSum(exp);
        if (op == BooleanExp::opAnd) return ReadFactors(exp);
        if (m_level == Level::comparison) return Fail("PrimitiveExp: Wrong level");
        ReadComparison(exp);
    }
    void VisitColumnExp(ColumnExp& exp) override {
        if (m_level != Level::comparison) return Fail("ColumnExp: Wrong level");
        const auto found = std::find(m_columns.begin(), m_columns.end(), exp.GetColumnName());
        if (found == m_columns.end()) return Fail("ColumnExp: Unknown column");
        if (m_column) return Fail("ColumnExp: Multiple columns");
        m_column = static_cast<size_t>(found - m_columns.begin());
    }
    void VisitConstantExp(ConstantExp& exp) override {
        if (m_level != Level::comparison) return Fail("ConstantExp: Wrong level");
        if (m_value || exp.GetValueCount() != 1) return Fail("ConstantExp: Multiple values");
        m_value = exp.GetValue();
    }
    void VisitCaseExp(CaseExp&) override { Fail("CaseExp"); }
    void VisitCastExp(CastExp&) override { Fail("CastExp"); }
    void VisitCompressExp(CompressExp&) override { Fail("CompressExp"); }
    void VisitDataExp(DataExp&) override { Fail("DataExp"); }
    void VisitExpandExp(ExpandExp&) override { Fail("ExpandExp"); }
    void VisitHashExp(HashExp&) override { Fail("HashExp"); }
    void VisitLookupExp(LookupExp&) override { Fail("LookupExp"); }
    void VisitPartitionExp(PartitionExp&) override { Fail("PartitionExp"); }

    void Fail(const char* fault) {
        if (!m_fault) m_fault = fault;
    }

    void ReadSum(PrimitiveExp& exp) {
        if (m_level == Level::product) return Fail("OrExp: Wrong level");
        if (m_level == Level::comparison) return Fail("BooleanExp: Wrong level");
        for (const RefCntPtr<Exp>& argument : exp.GetArguments()) {
            m_level = Level::sum;
            if (IsSum(*argument)) {
                argument->Accept(*this);
            } else {
                ReadProduct(*argument);
            }
            if (m_fault) return;
        }
    }
    static bool IsSum(const Exp& exp) {
        const auto* call = dynamic_cast<const PrimitiveExp*>(&exp);
        return call && call->GetOperation() == BooleanExp::opOr;
    }

    // One product, or all of a sum.
    void ReadProduct(Exp& exp) {
        if (IsSum(exp)) return exp.Accept(*this);
        m_product.assign(m_columns.size(), std::nullopt);
        m_impossible = false;
        m_level = Level::product;
        exp.Accept(*this);
        if (m_fault) return;
        SumOfProducts::Product product;
        for (const std::optional<usratom>& value : m_product) {
            if (!value) return Fail("PrimitiveExp: Missing key");
            product.push_back(*value);
        }
        if (!m_impossible) m_products.push_back(std::move(product));
    }

    void ReadFactors(PrimitiveExp& exp) {
        if (m_level == Level::comparison) return Fail("AndExp: Wrong level");
        for (const RefCntPtr<Exp>& argument : exp.GetArguments()) {
            m_level = Level::product;
            argument->Accept(*this);
            if (m_fault) return;
        }
    }

    void ReadComparison(const PrimitiveExp& exp) {
        const bool isNull = exp.GetOperation() == L"isnull";
        if (!isNull && exp.GetOperation() != L"eq") return Fail("PrimitiveExp: Invalid comparator");
        m_column.reset();
        m_value.reset();
        for (const RefCntPtr<Exp>& argument : exp.GetArguments()) {
            m_level = Level::comparison;
            argument->Accept(*this);
            if (m_fault) return;
        }
        if (!m_column || m_value.has_value() == isNull) return Fail("PrimitiveExp: Missing key");
        std::optional<usratom>& factor = m_product[*m_column];
        if (factor) return Fail("PrimitiveExp: Duplicate key");
        if (!isNull && m_value->isnull()) m_impossible = true;
        factor = isNull ? usratom() : *m_value;
    }

    const std::vector<std::wstring>& m_columns;
    std::vector<SumOfProducts::Product> m_products;
    std::vector<std::optional<usratom>> m_product;  // by column, as far as it is known
    bool m_impossible = false;
    std::optional<size_t> m_column;  // of the comparison
    std::optional<usratom> m_value;
    Level m_level = Level::sum;
    const char* m_fault = nullptr;
};

}  // namespace

std::optional<SumOfProducts> SumOfProducts::Find(Exp& condition, const std::vector<std::wstring>& columns) {
    Reader reader(columns);
    reader.Read(condition);
    if (reader.Fault()) return std::nullopt;
    return SumOfProducts{reader.TakeProducts()};
}

SumOfProducts SumOfProducts::Extract(Exp& condition, const std::vector<std::wstring>& columns) {
    Reader reader(columns);
    reader.Read(condition);
    if (reader.Fault()) throw QVE_InvalidArgument(status::SumOfProducts_Extract, reader.Fault());
    return SumOfProducts{reader.TakeProducts()};
}

}  // namespace qve
