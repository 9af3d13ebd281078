#pragma once

#include "storage/stream/DataStream.h"

namespace qve {

/// Forwards all operations to another stream: the base of all streams that change something about another one.
class DelegatedDataStream : public DataStream {
public:
    explicit DelegatedDataStream(RefCntPtr<DataStream> delegate, const char* typeName = "DelegatedDataStream");

    bool IsOwned() const override { return m_delegate->IsOwned(); }
    void SetOwned() override { m_delegate->SetOwned(); }
    Guid GetGuid() const override { return m_delegate->GetGuid(); }
    void SetGuid(Guid guid) override;
    uint64_t GetPageLimit() const override { return m_delegate->GetPageLimit(); }
    void SetPageLimit(uint64_t limit) override;
    uint64_t GetSize() const override { return m_delegate->GetSize(); }
    uint64_t GetStorageSize() const override { return m_delegate->GetStorageSize(); }
    uint64_t GetCursor() const override { return m_delegate->GetCursor(); }
    uint64_t GetLimit() const override { return m_delegate->GetLimit(); }
    const char* GetInput(uint64_t offset) const override { return m_delegate->GetInput(offset); }
    char* GetOutput(uint64_t offset) override { return m_delegate->GetOutput(offset); }
    uint64_t Seek(uint64_t position, uint64_t minimum) override { return m_delegate->Seek(position, minimum); }
    bool IsResident() const override { return m_delegate->IsResident(); }
    uint64_t Load(uint64_t position, uint64_t count) const override { return m_delegate->Load(position, count); }
    uint64_t Purge() override { return m_delegate->Purge(); }
    RefCntPtr<DataStream> Fork(bool readOnly) override { return m_delegate->Fork(readOnly); }
    bool CanExtend() const override { return m_delegate->CanExtend(); }
    void Extend(uint64_t count) override { m_delegate->Extend(count); }
    void Resize(uint64_t size) override { m_delegate->Resize(size); }
    void Append(DataStream& from) override { m_delegate->Append(from); }
    void Append(const void* bytes, uint64_t count) override { m_delegate->Append(bytes, count); }
    bool Rename(const std::wstring& path) override { return m_delegate->Rename(path); }
    StreamAccelerator* GetAccelerator() const override { return m_delegate->GetAccelerator(); }
    void SetAccelerator(RefCntPtr<StreamAccelerator> accelerator) override;

    virtual const RefCntPtr<DataStream>& GetDelegate() const { return m_delegate; }
    virtual void SetDelegate(RefCntPtr<DataStream> delegate) { m_delegate = std::move(delegate); }

private:
    RefCntPtr<DataStream> m_delegate;  // never null
};

}  // namespace qve
