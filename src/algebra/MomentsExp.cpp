#include "algebra/MomentsExp.h"

#include <array>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
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

// Null where there are too few values: of none the divisor may be -1.
double Quotient(double dividend, double divisor) {
    const double result = dividend / divisor;
    return divisor <= 0 || std::isnan(result) ? datatraits<double>::null : result;
}

// The values of a page by row, or one value for all rows.
struct Values {
    explicit Values(const Exp& exp)
        : values(exp.GetResult().values<double>()), single(exp.GetPrimitiveStorage() == Column::storageVal) {}
    double operator[](unsigned row) const { return values[single ? 0 : row]; }

    const double* values;
    bool single;
};

// All values are taken from the first one on, so that a large mean costs no digits.
struct Moments {
    double count = 0;
    double origin = 0;   // the first value
    double mean = 0;     // from the origin
    double squares = 0;  // the sum of the squares of deviations

    bool IsEmpty() const { return count == 0; }
    /// Takes `x`, which must be a value, for the first one.
    void Start(double x) { origin = x; }
    void Add(double x) {
        if (std::isnan(x)) return;
        if (IsEmpty()) Start(x);
        x -= origin;
        count += 1;
        const double deviation = x - mean;
        mean += deviation / count;
        squares += deviation * (x - mean);
    }
    // Those of values that were taken apart, from the same origin.
    void Add(const Moments& other) {
        if (other.count == 0) return;
        const double both = count + other.count;
        const double distance = other.mean - mean;
        squares += other.squares + distance * distance * (count * other.count / both);
        mean += distance * (other.count / both);
        count = both;
    }
    double Result(Statistic statistic) const {
        return Quotient(squares, statistic == Statistic::var ? count - 1 : count);
    }
};

struct JointMoments {
    Moments x;
    Moments y;
    double products = 0;  // of deviations

    bool IsEmpty() const { return x.IsEmpty(); }
    void Start(double first, double second) {
        x.Start(first);
        y.Start(second);
    }
    void Add(double first, double second) {
        if (std::isnan(first) || std::isnan(second)) return;
        if (IsEmpty()) Start(first, second);
        const double deviation = first - x.origin - x.mean;
        x.Add(first);
        y.Add(second);
        products += deviation * (second - y.origin - y.mean);
    }
    void Add(const JointMoments& other) {
        if (other.x.count == 0) return;
        const double weight = x.count * other.x.count / (x.count + other.x.count);
        products += other.products + (other.x.mean - x.mean) * (other.y.mean - y.mean) * weight;
        x.Add(other.x);
        y.Add(other.y);
    }
    double Result(Statistic statistic) const {
        if (statistic == Statistic::corr) return Quotient(products, std::sqrt(x.squares) * std::sqrt(y.squares));
        return Quotient(products, statistic == Statistic::covar ? x.count - 1 : x.count);
    }
};

// The moments of rows of one group, from the origin of `group`, by a first pass over the page for the means. With one
// division for all of them this is much faster than value by value.
JointMoments OfPage(const JointMoments& group, unsigned count, const unsigned* sel, Values x, Values y) {
    JointMoments page;
    const auto visit = [&](auto take) {
        for (unsigned k = 0; k < count; ++k) {
            const unsigned row = sel ? sel[k] : k;
            const double first = x[row] - group.x.origin;
            const double second = y[row] - group.y.origin;
            take(first, second, !std::isnan(first) && !std::isnan(second));
        }
    };
    double n = 0, sumX = 0, sumY = 0;
    visit([&](double first, double second, bool present) {
        n += present ? 1 : 0;
        sumX += present ? first : 0;
        sumY += present ? second : 0;
    });
    if (n == 0) return page;
    page.x.count = page.y.count = n;
    page.x.mean = sumX / n;
    page.y.mean = sumY / n;
    visit([&](double first, double second, bool present) {
        const double dx = present ? first - page.x.mean : 0;
        const double dy = present ? second - page.y.mean : 0;
        page.x.squares += dx * dx;
        page.y.squares += dy * dy;
        page.products += dx * dy;
    });
    return page;
}
Moments OfPage(const Moments& group, unsigned count, const unsigned* sel, Values x) {
    double n = 0, sum = 0;
    const auto at = [&](unsigned k) { return x[sel ? sel[k] : k] - group.origin; };
    for (unsigned k = 0; k < count; ++k) {
        const double value = at(k);
        n += std::isnan(value) ? 0 : 1;
        sum += std::isnan(value) ? 0 : value;
    }
    Moments page;
    if (n == 0) return page;
    page.count = n;
    page.mean = sum / n;
    for (unsigned k = 0; k < count; ++k) {
        const double value = at(k);
        const double deviation = std::isnan(value) ? 0 : value - page.mean;
        page.squares += deviation * deviation;
    }
    return page;
}

// Adds the rows of a page to the moments of their groups.
template <class M, class... X>
void AddRows(M* moments, unsigned count, input_column groups, const unsigned* sel, X... values) {
    const unsigned* numbers = groups.values<unsigned>();
    const auto row = [sel](unsigned k) { return sel ? sel[k] : k; };
    if ((groups.flags & column_flags::constant) == 0) {
        for (unsigned k = 0; k < count; ++k) moments[numbers[row(k)]].Add(values[row(k)]...);
        return;
    }
    M& group = moments[numbers[0]];
    if (!group.IsEmpty()) return group.Add(OfPage(group, count, sel, values...));
    for (unsigned k = 0; k < count; ++k) group.Add(values[row(k)]...);  // the first value is the origin of all others
}

}  // namespace

class MomentsExp::Groups {
public:
    virtual ~Groups() = default;
    /// `first` is the number of the group that `groups` calls 0, of `size` in all.
    virtual void Add(const Arguments& arguments, unsigned count, input_column groups, const unsigned* sel,
                     uint64_t first, uint64_t size) = 0;
    virtual void Finish(const MomentsExp& exp, uint64_t size) = 0;
};

// M is Moments of one argument, JointMoments of two.
template <class M>
class MomentsExp::GroupsOf : public Groups {
public:
    void Add(const Arguments& arguments, unsigned count, input_column groups, const unsigned* sel, uint64_t first,
             uint64_t size) override {
        m_moments.resize(size);
        M* const moments = m_moments.data() + first;
        if constexpr (std::is_same_v<M, Moments>) {
            AddRows(moments, count, groups, sel, Values(*arguments[0]));
        } else {
            AddRows(moments, count, groups, sel, Values(*arguments[0]), Values(*arguments[1]));
        }
    }
    void Finish(const MomentsExp& exp, uint64_t size) override {
        m_moments.resize(size);
        exp.StoreResults<double>(size, [&](uint64_t group) { return m_moments[group].Result(exp.m_statistic); });
    }

private:
    std::vector<M> m_moments;
};

const MomentsExp::Statistic* MomentsExp::Find(const std::wstring& word) {
    for (const auto& [known, statistic] : words) {
        if (known == word) return &statistic;
    }
    return nullptr;
}

MomentsExp::MomentsExp(const std::wstring& name, const std::wstring& word, Statistic statistic, Arguments arguments)
    : CollectingExp(name, word, std::move(arguments)), m_statistic(statistic) {}
MomentsExp::~MomentsExp() = default;

void MomentsExp::MakePrimitiveColumn() {
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        if (argument->GetColumn()->GetType() != builtin::usrtypeof<double>()) {
            throw QVE_InvalidArgument(status::MomentsExp_MakePrimitiveColumn, "MomentsExp::MakePrimitiveColumn");
        }
    }
    if (m_arguments.size() == 1) {
        m_groups = std::make_unique<GroupsOf<Moments>>();
    } else {
        m_groups = std::make_unique<GroupsOf<JointMoments>>();
    }
    MakeResultColumn(primitive::primitive_props(L"double"));
}

void MomentsExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    m_groups->Add(m_arguments, count, groups, sel, m_column->GetCursor(), m_column->GetCount());
}

void MomentsExp::FinishAggregate(uint64_t groups, const ProgressCallback*) {
    m_groups->Finish(*this, groups);
    m_groups.reset();
}

}  // namespace qve
