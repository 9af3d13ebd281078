#include "tests/support/EngineClient.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

#include "system/unicode.h"

namespace qve::test {
namespace {

template <class T>
T Load(const QVE_Value& value) {
    T result{};
    std::memcpy(&result, value.data, std::min(sizeof(T), static_cast<size_t>(value.size)));
    return result;
}

std::string TimeText(int hour, int minute, int second, int fraction) {
    std::string text = fmt::format("{:02}:{:02}:{:02}", hour, minute, second);
    return fraction == 0 ? text : text + fmt::format(".{:04}", fraction);
}

Cell CellOf(const QVE_Value& value) {
    if (value.type & QVE_NULL) return {};
    switch (QVE_TYPE(value.type)) {
        case QVE_INT8:
            return static_cast<long long>(Load<int8_t>(value));
        case QVE_UINT8:
            return static_cast<long long>(Load<uint8_t>(value));
        case QVE_INT16:
            return static_cast<long long>(Load<int16_t>(value));
        case QVE_UINT16:
            return static_cast<long long>(Load<uint16_t>(value));
        case QVE_INT32:
            return static_cast<long long>(Load<int32_t>(value));
        case QVE_UINT32:
            return static_cast<long long>(Load<uint32_t>(value));
        case QVE_INT64:
        case QVE_UINT64:
            return static_cast<long long>(Load<int64_t>(value));
        case QVE_FLOAT:
            return static_cast<double>(Load<float>(value));
        case QVE_DOUBLE:
            return Load<double>(value);
        case QVE_BOOL:
            return static_cast<long long>(Load<uint8_t>(value));
        case QVE_DATE: {
            const auto d = Load<QVE_Date>(value);
            return fmt::format("{:04}-{:02}-{:02}", d.year, d.month, d.day);
        }
        case QVE_DATETIME: {
            const auto t = Load<QVE_Datetime>(value);
            return fmt::format("{:04}-{:02}-{:02} {}", t.year, t.month, t.day,
                               TimeText(t.hour, t.minute, t.second, t.fraction));
        }
        case QVE_DURATION: {
            const auto u = Load<QVE_Duration>(value);
            const bool negative = u.days < 0 || u.hours < 0 || u.minutes < 0 || u.seconds < 0 || u.fraction < 0;
            return fmt::format(
                "{}{} {}", negative ? "-" : "", std::abs(u.days),
                TimeText(std::abs(u.hours), std::abs(u.minutes), std::abs(u.seconds), std::abs(u.fraction)));
        }
        case QVE_TEXT8:
            return std::string(static_cast<const char*>(value.data), value.size);
        case QVE_TEXT16: {
            std::u16string text(value.size / 2, u'\0');
            if (value.size) std::memcpy(text.data(), value.data, value.size);
            return narrow(text);
        }
        default:
            throw EngineError(-1, fmt::format("value of unknown type {}", value.type));
    }
}

std::string TextOf(const QVE_Value& value) {
    return FormatCell(CellOf(value));
}

}  // namespace

std::string FormatCell(const Cell& cell) {
    if (const auto* number = std::get_if<long long>(&cell)) return std::to_string(*number);
    if (const auto* number = std::get_if<double>(&cell)) return fmt::format("{}", *number);
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    return "NULL";
}

EngineProcess::EngineProcess(const std::string& config, const std::string& tempDirectory) {
    if (QVE_ServerProcessOpen(&m_process) != QVE_OK) throw EngineError(-1, "no server process");
    QVE_ServerProcessOptions options{};
    options.path = QVE_SERVER_PATH;
    options.config = config.empty() ? nullptr : config.c_str();
    options.log = "/dev/null";
    options.temp_directory = tempDirectory.empty() ? nullptr : tempDirectory.c_str();
    if (const QVE_Status status = QVE_ServerProcessStart(m_process, &options)) {
        QVE_ServerProcessClose(m_process);
        throw EngineError(status, "the server does not start");
    }
}

EngineProcess::~EngineProcess() {
    QVE_ServerProcessClose(m_process);
}

std::string EngineProcess::GetDescriptor() const {
    const char* descriptor = nullptr;
    QVE_ServerProcessGetConnectionDescriptor(m_process, &descriptor);
    return descriptor ? descriptor : "";
}

int EngineProcess::GetProcessId() const {
    int id = 0;
    QVE_ServerProcessGetProcessId(m_process, &id);
    return id;
}

EngineClient::EngineClient(const std::string& descriptor) {
    Check(QVE_ConnectionOpen(&m_connection));
    Check(QVE_ConnectionConnect(m_connection, descriptor.c_str()));
}

EngineClient::~EngineClient() {
    QVE_ConnectionDisconnect(m_connection);
}

void EngineClient::Check(QVE_Status status) const {
    if (status == QVE_OK) return;
    QVE_ErrorInfo* info = nullptr;
    uint32_t count = 0;
    std::string all;
    if (QVE_GetErrorInfo(m_connection, &info) == QVE_OK) QVE_ErrorInfoGetCount(info, &count);
    for (uint32_t i = 0; i < count; ++i) {
        QVE_Status number = 0;
        const char* text = nullptr;
        QVE_ErrorInfoGetError(info, i, &number, &text);
        all += (i ? "\n" : "") + std::string(text);
    }
    QVE_ErrorInfoClose(info);
    throw EngineError(status, all);
}

Rows EngineClient::Run(const std::string& statement) {
    QVE_Rowset* rowset = nullptr;
    Check(QVE_QueryExecute(m_connection, statement.c_str(), &rowset));
    return Fetch(rowset);
}

Rows EngineClient::RunPlan(const std::string& plan) {
    QVE_Statement* statement = nullptr;
    Check(QVE_StatementOpen(m_connection, &statement));
    struct Closer {
        QVE_Statement* statement;
        ~Closer() { QVE_StatementClose(statement); }
    } closer{statement};
    Check(QVE_StatementPlan(statement, plan.c_str()));
    QVE_Rowset* rowset = nullptr;
    Check(QVE_StatementExecute(statement, &rowset));
    return Fetch(rowset);
}

Rows EngineClient::Fetch(QVE_Rowset* rowset) const {
    Rows result;
    if (!rowset) return result;
    struct Closer {
        QVE_Rowset* rowset;
        ~Closer() { QVE_RowsetClose(rowset); }
    } closer{rowset};

    uint32_t columns = 0;
    Check(QVE_RowsetGetColumnCount(rowset, &columns));
    for (uint32_t i = 0; i < columns; ++i) {
        QVE_Properties* properties = nullptr;
        QVE_Value key{};
        QVE_Value name{};
        Check(QVE_RowsetGetColumnProperties(rowset, i, &properties));
        Check(QVE_PropertiesGetProperty(properties, 0, &key, &name));
        result.columns.push_back(TextOf(name));
        QVE_PropertiesClose(properties);
    }
    if (columns == 0) return result;
    std::vector<QVE_Value> values(columns * size_t{256});
    for (;;) {
        size_t count = 0;
        Check(QVE_RowsetGetValues(rowset, values.size(), values.data(), &count));
        if (count == 0) return result;
        for (size_t i = 0; i < count; i += columns) {
            Row row;
            for (uint32_t column = 0; column < columns; ++column) row.push_back(CellOf(values[i + column]));
            result.rows.push_back(std::move(row));
        }
    }
}

}  // namespace qve::test
