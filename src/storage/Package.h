#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "os/DataFile.h"
#include "storage/TableSpace.h"
#include "system/ProgressCallback.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

/// The package file: a directory tree in one file, which is opened as it is. Its bytes are drawn in docs/storage.md.
namespace qve::Package {

/// Bytes of the file, `[first, second)`.
using Range = std::pair<uint64_t, uint64_t>;

/// An entry of the tree.
class Node : public RefCntObject {
public:
    explicit Node(Range range) : m_range(range) {}
    /// Where the node itself lies.
    const Range& GetRange() const { return m_range; }

private:
    const Range m_range;
};

class File : public Node {
public:
    /// A file whose node is read when it is asked for. Its data lie at `lowest` or behind.
    File(Range range, uint64_t lowest) : Node(range), m_lowest(lowest), m_data(unread) {}
    File(Range range, Range data, std::wstring name)
        : Node(range), m_lowest(data.first), m_data(data), m_name(std::move(name)) {}

    /// Where the data lie. Reads the node from the package file when that was not done yet, and throws as Open then.
    /// One thread at a time.
    const Range& GetData(const DataFile& package);
    /// A text that the node carries; empty in what Create writes.
    const std::wstring& GetName() const { return m_name; }

private:
    static constexpr Range unread{1, 0};

    const uint64_t m_lowest;
    Range m_data;
    std::wstring m_name;
};

class Directory : public Node {
public:
    using Children = std::map<std::wstring, RefCntPtr<Node>>;

    Directory(Range range, Children children);
    const Children& GetChildren() const { return m_children; }
    /// The child of a name, in whatever form of Unicode it is written; null when there is none.
    RefCntPtr<Node> Find(const std::wstring& name) const;

private:
    const Children m_children;
    Children m_composed;  // those whose names are not in composed form, by their composed form
};

/// Bytes of the header.
constexpr uint64_t headerSize = 28;
/// Directories within each other at most.
constexpr unsigned maxDepth = 64;

/// Which nodes Open reads: all, or those of directories, which are few.
enum class Read { all, directories };

/// Reads the tree. Every child lies before its parent and behind the sibling before it, with all that is below it, so
/// that no byte is read twice and no loop is followed; memory is bounded by the length of the file. Throws
/// QVE_RangeError 40282 for a file that is too short to be a package, and QVE_RuntimeError: 40283 bad magic number,
/// 40284 bad version, 40280 and 40279 a node or the data of a file lie where they cannot, 40276 a node ends within a
/// field, 40277 and 40278 a node has bytes left over, 40281 bad node type, as of a root that is no directory, 40274 a
/// name that no file can have, 40275 too deep.
RefCntPtr<Node> Open(const RefCntPtr<DataFile>& file, Read read = Read::all);

/// Whether the file begins as a package does.
bool IsPackage(const RefCntPtr<DataFile>& file);
/// The same for a path; false when it cannot be read.
bool IsPackage(const std::wstring& path);

/// Writes all that lies in a space to a new file, which is on the disk at the end. Progress counts files. When it fails
/// or is cancelled, there is no file. Throws QVE_LogicError 40090 when the path exists, Operator::CancelledException,
/// and what the space and the system throw.
void Create(const RefCntPtr<TableSpace>& source, const std::wstring& path,
            const RefCntPtr<ProgressCallback>& progress = nullptr);

/// Writes the tree of a package into a space, whose root is made when it is not there. Progress counts files. Throws
/// QVE_RuntimeError 40273 when a path exists in the space, Operator::CancelledException, and as Open.
void Expand(const RefCntPtr<TableSpace>& target, const std::wstring& path,
            const RefCntPtr<ProgressCallback>& progress = nullptr);
/// The same for the tree of another space.
void Expand(const RefCntPtr<TableSpace>& target, const RefCntPtr<TableSpace>& source,
            const RefCntPtr<ProgressCallback>& progress = nullptr);

}  // namespace qve::Package
