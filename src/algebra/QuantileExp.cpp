#include "algebra/QuantileExp.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "algebra/ConstantExp.h"
#include "algebra/GroupedValues.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/select_rank.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "types/builtin.h"
#include "types/datatraits.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {
namespace {

bool IsNull(double value) {
    return std::isnan(value);  // no other NaN has a place in an order either
}
bool IsNull(unsigned long long value) {
    return value == datatraits<datetime>::null.value;
}
bool IsNull(long long value) {
    return value == datatraits<duration>::null.value;
}

double Between(double a, double b, double part) {
    return a + (b - a) * part;
}
// In ticks; b is not below a.
template <class T>
T Between(T a, T b, double part) {
    const auto span = static_cast<unsigned long long>(b) - static_cast<unsigned long long>(a);
    const auto ticks = static_cast<unsigned long long>(std::llround(static_cast<double>(span) * part));
    return static_cast<T>(static_cast<unsigned long long>(a) + ticks);
}

}  // namespace

class QuantileExp::Values {
public:
    virtual ~Values() = default;
    virtual void Add(unsigned count, input_column values, bool single, input_column groups, unsigned firstGroup,
                     const unsigned* sel) = 0;
    virtual void Finish(double fraction, Column& results, uint64_t groups, const ProgressCallback* progress) = 0;
};

// T is what the cells are: a double, or the ticks of a datetime or a duration.
template <class T>
class QuantileExp::TypedValues : public Values {
public:
    void Add(unsigned count, input_column values, bool single, input_column groups, unsigned firstGroup,
             const unsigned* sel) override {
        const unsigned* numbers = groups.values<unsigned>();
        const bool oneGroup = groups.flags & column_flags::constant;
        const bool grouped = !oneGroup || firstGroup + numbers[0] > 0;
        for (unsigned done = 0; done < count;) {
            const auto room = m_values.Reserve(grouped);
            const auto take = static_cast<unsigned>(std::min<size_t>(count - done, room.values.size()));
            uint64_t kept = 0;
            const auto keep = [&](auto row) {
                for (unsigned k = done; k < done + take; ++k) {
                    const T value = values.values<T>()[single ? 0 : row(k)];
                    room.values[kept] = value;
                    if (room.groups) room.groups[kept] = firstGroup + numbers[oneGroup ? 0 : row(k)];
                    kept += !IsNull(value);
                }
            };
            if (sel) {
                keep([sel](unsigned k) { return sel[k]; });
            } else {
                keep([](unsigned k) { return k; });
            }
            m_values.Commit(kept);
            done += take;
        }
    }

    void Finish(double fraction, Column& results, uint64_t groups, const ProgressCallback* progress) override {
        if (!(fraction >= 0 && fraction <= 1) || m_values.GetCount() == 0) return;
        const auto put = [&](uint64_t group, uint64_t count, auto select) {
            const double position = static_cast<double>(count - 1) * fraction;
            const auto [low, high] = select(static_cast<uint64_t>(position));
            results.Seek(group, 1);
            const double part = position - std::floor(position);
            const T result = part == 0 ? low : Between(low, high, part);
            std::memcpy(results.GetOutput().data, &result, sizeof result);
        };
        if (groups == 1) {
            put(0, m_values.GetCount(), [this](uint64_t low) { return select_pair<T>(m_values.GetPieces(), low); });
            return;
        }
        const auto visit = [&](uint64_t group, std::span<T> values) {
            put(group, values.size(), [values](uint64_t low) { return select_pair<T>(values, low); });
        };
        m_values.VisitGroups(groups, visit, [progress] { OperatorProgressCallback::Check(progress); });
    }

private:
    GroupedValues<T> m_values;
};

QuantileExp::QuantileExp(const std::wstring& name, RefCntPtr<Exp> value, RefCntPtr<Exp> fraction)
    : CollectingExp(name, opQuantile, {std::move(value), std::move(fraction)}) {}
QuantileExp::~QuantileExp() = default;

void QuantileExp::MakePrimitiveColumn() {
    const usrtype* type = m_arguments[0]->GetColumn()->GetType();
    const auto* fraction = dynamic_cast<const ConstantExp*>(m_arguments[1].get());
    if (type == builtin::usrtypeof<double>()) {
        m_values = std::make_unique<TypedValues<double>>();
    } else if (type == builtin::usrtypeof<datetime>()) {
        m_values = std::make_unique<TypedValues<unsigned long long>>();
    } else if (type == builtin::usrtypeof<duration>()) {
        m_values = std::make_unique<TypedValues<long long>>();
    }
    if (!m_values || !fraction || fraction->GetColumn()->GetType() != builtin::usrtypeof<double>()) {
        throw QVE_InvalidArgument(status::QuantileExp_MakePrimitiveColumn, "QuantileExp::MakePrimitiveColumn");
    }
    const usratom atom = fraction->GetValue();
    m_fraction = atom.isnull() ? datatraits<double>::null : static_cast<double>(atom);
    MakeResultColumn(type->properties());
}

void QuantileExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    const bool single = m_arguments[0]->GetPrimitiveStorage() == Column::storageVal;
    m_values->Add(count, m_arguments[0]->GetResult(), single, groups, static_cast<unsigned>(m_column->GetCursor()),
                  sel);
}

void QuantileExp::FinishAggregate(uint64_t groups, const ProgressCallback* progress) {
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) {
        LogEntry() << "AGGR " << GetName() << ": quantile by selection";
    }
    m_values->Finish(m_fraction, *m_column, groups, progress);
    m_values.reset();
}

}  // namespace qve
