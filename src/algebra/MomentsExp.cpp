#include "algebra/MomentsExp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/builtin.h"
#include "types/datatraits.h"

namespace qve {
namespace {

using Statistic = MomentsExp::Statistic;

constexpr std::array<std::pair<std::wstring_view, Statistic>, 5> words{{{L"var", Statistic::var},
                                                                        {L"varp", Statistic::varp},
                                                                        {L"covar", Statistic::covar},
                                                                        {L"covarp", Statistic::covarp},
                                                                        {L"corr", Statistic::corr}}};

double Quotient(double dividend, double divisor) {
    const double result = dividend / divisor;
    return divisor == 0 || std::isnan(result) ? datatraits<double>::null : result;
}

// The values of a page by row, or one value for all rows.
struct Values {
    explicit Values(const Exp& exp)
        : values(exp.GetResult().values<double>()), single(exp.GetPrimitiveStorage() == Column::storageVal) {}
    double operator[](unsigned row) const { return values[single ? 0 : row]; }

    const double* values;
    bool single;
};

struct Moments {
    double count = 0;
    double mean = 0;
    double squares = 0;  // the sum of the squares of deviations

    void Add(double x) {
        if (std::isnan(x)) return;
        count += 1;
        const double deviation = x - mean;
        mean += deviation / count;
        squares += deviation * (x - mean);
    }
    double Result(Statistic statistic) const {
        return Quotient(squares, statistic == Statistic::var ? count - 1 : count);
    }
};

struct JointMoments {
    Moments x;
    Moments y;
    double products = 0;  // of deviations

    void Add(double first, double second) {
        if (std::isnan(first) || std::isnan(second)) return;
        const double deviation = first - x.mean;
        x.Add(first);
        y.Add(second);
        products += deviation * (second - y.mean);
    }
    double Result(Statistic statistic) const {
        if (statistic == Statistic::corr) return Quotient(products, std::sqrt(x.squares) * std::sqrt(y.squares));
        return Quotient(products, statistic == Statistic::covar ? x.count - 1 : x.count);
    }
};

// Calls `add(group, row)` for the selected rows.
template <class Add>
void ForRows(unsigned count, input_column groups, const unsigned* sel, Add add) {
    const unsigned* numbers = groups.values<unsigned>();
    if (groups.flags & column_flags::constant) {
        for (unsigned k = 0; k < count; ++k) add(numbers[0], sel ? sel[k] : k);
    } else {
        for (unsigned k = 0; k < count; ++k) {
            const unsigned row = sel ? sel[k] : k;
            add(numbers[row], row);
        }
    }
}

template <class M>
void Store(Column& column, const std::vector<M>& moments, Statistic statistic) {
    for (uint64_t done = 0; done < moments.size();) {
        column.Seek(done, 1);
        const uint64_t limit = std::min<uint64_t>(column.GetLimit(), moments.size() - done);
        double* results = column.GetOutput().values<double>();
        for (uint64_t i = 0; i < limit; ++i) results[i] = moments[done + i].Result(statistic);
        done += limit;
    }
}

}  // namespace

class MomentsExp::Groups {
public:
    virtual ~Groups() = default;
    /// `first` is the number of the group that `groups` calls 0, of `size` in all.
    virtual void Add(const Arguments& arguments, unsigned count, input_column groups, const unsigned* sel,
                     uint64_t first, uint64_t size) = 0;
    virtual void Finish(Column& results, Statistic statistic, uint64_t size) = 0;
};

class MomentsExp::Variances : public Groups {
public:
    void Add(const Arguments& arguments, unsigned count, input_column groups, const unsigned* sel, uint64_t first,
             uint64_t size) override {
        m_moments.resize(size);
        const Values x(*arguments[0]);
        Moments* moments = m_moments.data() + first;
        ForRows(count, groups, sel, [&](unsigned group, unsigned row) { moments[group].Add(x[row]); });
    }
    void Finish(Column& results, Statistic statistic, uint64_t size) override {
        m_moments.resize(size);
        Store(results, m_moments, statistic);
    }

private:
    std::vector<Moments> m_moments;
};

class MomentsExp::Covariances : public Groups {
public:
    void Add(const Arguments& arguments, unsigned count, input_column groups, const unsigned* sel, uint64_t first,
             uint64_t size) override {
        m_moments.resize(size);
        const Values x(*arguments[0]);
        const Values y(*arguments[1]);
        JointMoments* moments = m_moments.data() + first;
        ForRows(count, groups, sel, [&](unsigned group, unsigned row) { moments[group].Add(x[row], y[row]); });
    }
    void Finish(Column& results, Statistic statistic, uint64_t size) override {
        m_moments.resize(size);
        Store(results, m_moments, statistic);
    }

private:
    std::vector<JointMoments> m_moments;
};

const MomentsExp::Statistic* MomentsExp::Find(const std::wstring& word) {
    for (const auto& [known, statistic] : words) {
        if (known == word) return &statistic;
    }
    return nullptr;
}

MomentsExp::MomentsExp(const std::wstring& name, const std::wstring& word, Statistic statistic, Arguments arguments)
    : AggrExp(name, word, std::move(arguments), false), m_statistic(statistic) {}
MomentsExp::~MomentsExp() = default;

void MomentsExp::MakePrimitiveColumn() {
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        if (argument->GetColumn()->GetType() != builtin::usrtypeof<double>()) {
            throw QVE_InvalidArgument(status::MomentsExp_MakePrimitiveColumn, "MomentsExp::MakePrimitiveColumn");
        }
    }
    if (m_arguments.size() == 1) {
        m_groups = std::make_unique<Variances>();
    } else {
        m_groups = std::make_unique<Covariances>();
    }
    usrprops properties = primitive::primitive_props(L"double");
    properties.set(usrpropkey::name, GetName());
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
}

void MomentsExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
}

void MomentsExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    m_groups->Add(m_arguments, count, groups, sel, m_column->GetCursor(), m_column->GetCount());
}

void MomentsExp::FinishAggregate(uint64_t groups) {
    m_groups->Finish(*m_column, m_statistic, groups);
    m_groups.reset();
}

}  // namespace qve
