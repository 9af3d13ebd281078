#include "commands/Insert.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "storage/Database.h"

namespace qve {

Insert::Insert(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::vector<std::wstring> columns,
               std::wstring path)
    : m_table(table),
      m_rows(std::move(database), std::move(schema), std::move(table)),
      m_columns(std::move(columns)),
      m_path(std::move(path)),
      m_progress(MakeRef<ProgressCallbackImpl>()) {
    m_rows.DescribeColumns(m_columns);
}

void Insert::Accept(OperatorVisitor& visitor) {
    visitor.VisitInsert(*this);
}

RefCntPtr<Namespace> Insert::Execute(unsigned pageSize) {
    m_rows.Execute(m_rows.BuildTextFlow(m_path, m_columns), pageSize, m_progress);
    return nullptr;
}

}  // namespace qve
