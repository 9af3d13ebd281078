#include "commands/CreateFolder.h"

#include "algebra/OperatorVisitor.h"
#include "os/OS.h"
#include "os/Path.h"
#include "system/QuillonException.h"

namespace qve {

CreateFolder::CreateFolder(std::wstring path, bool parents) : m_path(std::move(path)), m_parents(parents) {}

void CreateFolder::Accept(OperatorVisitor& visitor) {
    visitor.VisitCreateFolder(*this);
}

RefCntPtr<Namespace> CreateFolder::Execute(unsigned) {
    try {
        OS::mkdir(m_path, m_parents);
    } catch (const QVE_RuntimeError&) {
        if (!Path::isdir(m_path)) throw;
    }
    return nullptr;
}

}  // namespace qve
