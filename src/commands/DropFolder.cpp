#include "commands/DropFolder.h"

#include "algebra/OperatorVisitor.h"
#include "os/OS.h"
#include "os/Path.h"
#include "system/QuillonException.h"

namespace qve {

DropFolder::DropFolder(std::wstring path, unsigned options) : m_path(std::move(path)), m_options(options) {}

void DropFolder::Accept(OperatorVisitor& visitor) {
    visitor.VisitDropFolder(*this);
}

RefCntPtr<Namespace> DropFolder::Execute(unsigned) {
    OS::rmdir(m_path, m_options & cascade);
    if (!(m_options & parents)) return nullptr;
    // The parents go as far as they can; where they cannot, the folder itself is gone all the same.
    try {
        std::wstring parent = Path::split(Path::normpath(m_path)).first;
        while (!parent.empty() && Path::isdir(parent) && OS::listdir(parent).empty()) {
            OS::rmdir(parent, false);
            parent = Path::split(parent).first;
        }
    } catch (const QVE_RuntimeError&) {
    }
    return nullptr;
}

}  // namespace qve
