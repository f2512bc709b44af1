#include "wine/hardware/fake_data_writer.h"

#include <utility>

namespace nuvelta::wine {

namespace {

class FakeBuffer : public Fake<abi::IBuffer, abi::IBufferByteAccess> {
 public:
  explicit FakeBuffer(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}

  HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) override { return get_Length(value); }
  HRESULT STDMETHODCALLTYPE get_Length(UINT32* value) override {
    *value = static_cast<UINT32>(m_bytes.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Length(UINT32 /*value*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Buffer(BYTE** value) override {
    *value = m_bytes.data();
    return S_OK;
  }

 private:
  std::vector<uint8_t> m_bytes;
};

// Unlike what the writer makes, its reading is counted and may fail.
class FakeResponse final : public FakeBuffer {
 public:
  using FakeBuffer::FakeBuffer;

  HRESULT STDMETHODCALLTYPE get_Length(UINT32* value) override {
    return Answer("DataBuffer::Length", [&] { return FakeBuffer::get_Length(value); });
  }
  HRESULT STDMETHODCALLTYPE Buffer(BYTE** value) override {
    *value = nullptr;
    return Answer("DataBuffer::Buffer", [&] { return FakeBuffer::Buffer(value); });
  }
};

class FakeDataWriter final : public Fake<abi::IDataWriter> {
 public:
  HRESULT STDMETHODCALLTYPE WriteBytes(UINT32 size, BYTE* bytes) override {
    return Answer("DataWriter::WriteBytes", [&] {
      m_bytes.insert(m_bytes.end(), bytes, bytes + size);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE DetachBuffer(abi::IBuffer** buffer) override {
    *buffer = nullptr;
    return Answer("DataWriter::DetachBuffer", [&] {
      *buffer = MakeFakeBuffer(std::exchange(m_bytes, {})).Detach();
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_UnstoredBufferLength(UINT32*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_UnicodeEncoding(INT32*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_UnicodeEncoding(INT32) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ByteOrder(INT32*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_ByteOrder(INT32) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteByte(BYTE) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteBuffer(abi::IBuffer*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteBufferRange(abi::IBuffer*, UINT32, UINT32) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE WriteBoolean(boolean) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteGuid(GUID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteInt16(INT16) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteInt32(INT32) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteInt64(INT64) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteUInt16(UINT16) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteUInt32(UINT32) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteUInt64(UINT64) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteSingle(FLOAT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteDouble(DOUBLE) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteDateTime(INT64) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteTimeSpan(INT64) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WriteString(HSTRING, UINT32*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE MeasureString(HSTRING, UINT32*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE StoreAsync(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FlushAsync(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DetachStream(IInspectable**) override { return E_NOTIMPL; }

 private:
  std::vector<uint8_t> m_bytes;
};

}  // namespace

ComPtr<abi::IDataWriter> MakeFakeDataWriter() {
  return ComPtr<abi::IDataWriter>::Adopt(new FakeDataWriter);
}

ComPtr<abi::IBuffer> MakeFakeBuffer(std::vector<uint8_t> bytes) {
  return ComPtr<abi::IBuffer>::Adopt(new FakeBuffer(std::move(bytes)));
}

ComPtr<abi::IBuffer> MakeFakeResponse(std::vector<uint8_t> bytes) {
  return ComPtr<abi::IBuffer>::Adopt(new FakeResponse(std::move(bytes)));
}

}  // namespace nuvelta::wine
