// The binary interfaces of Windows.Networking.NetworkOperators and
// Windows.Storage.Streams that the service uses, as the platform's metadata fixes
// them: identifiers, and methods in the order of their slots. Declared here
// because mingw-w64 lacks them, and has some of the generic ones wrong.
//
// A method that nobody here calls keeps its slot under its own name, and an
// interface without further use in it shows as IInspectable.
#pragma once

#include "platform/windows/win32.h"

#include <activation.h>
#include <hstring.h>
#include <inspectable.h>
#include <unknwn.h>

#include "platform/mobile_broadband.h"

namespace nuvelta::windows::abi {

using platform::AsyncStatus;
using platform::WatcherStatus;

inline constexpr wchar_t kModemClass[] =
    L"Windows.Networking.NetworkOperators.MobileBroadbandModem";
inline constexpr wchar_t kAccountWatcherClass[] =
    L"Windows.Networking.NetworkOperators.MobileBroadbandAccountWatcher";
inline constexpr wchar_t kDataWriterClass[] = L"Windows.Storage.Streams.DataWriter";

// EventRegistrationToken; by value in remove_*.
struct EventToken {
  INT64 value = 0;
};

// Objects are destroyed by Release only: their interfaces have no destructor that
// others can reach, but the platform's bases of them have.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// In an interface: its identifier, and no destructor for others.
#define NUVELTA_ABI_INTERFACE(name, ...)     \
  static constexpr GUID kId = {__VA_ARGS__}; \
                                             \
 protected:                                  \
  ~name() = default;                         \
                                             \
 public:

struct IBuffer : IInspectable {
  NUVELTA_ABI_INTERFACE(IBuffer, 0x905a0fe0, 0xbc53, 0x11df,
                        {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda})
  virtual HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Length(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Length(UINT32 value) = 0;
};

// The bytes belong to the object.
struct IBufferByteAccess : IUnknown {
  NUVELTA_ABI_INTERFACE(IBufferByteAccess, 0x905a0fef, 0xbc53, 0x11df,
                        {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda})
  virtual HRESULT STDMETHODCALLTYPE Buffer(BYTE** value) = 0;
};

struct IDataWriter : IInspectable {
  NUVELTA_ABI_INTERFACE(IDataWriter, 0x64b89265, 0xd341, 0x4922,
                        {0xb3, 0x8a, 0xdd, 0x4a, 0xf8, 0x80, 0x8c, 0x4e})
  virtual HRESULT STDMETHODCALLTYPE get_UnstoredBufferLength(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_UnicodeEncoding(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_UnicodeEncoding(INT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ByteOrder(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ByteOrder(INT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteByte(BYTE value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteBytes(UINT32 size, BYTE* bytes) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteBuffer(IBuffer* buffer) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteBufferRange(IBuffer* buffer, UINT32 start,
                                                     UINT32 count) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteBoolean(boolean value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteGuid(GUID value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteInt16(INT16 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteInt32(INT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteInt64(INT64 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteUInt16(UINT16 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteUInt32(UINT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteUInt64(UINT64 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteSingle(FLOAT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteDouble(DOUBLE value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteDateTime(INT64 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteTimeSpan(INT64 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteString(HSTRING value, UINT32* code_units) = 0;
  virtual HRESULT STDMETHODCALLTYPE MeasureString(HSTRING value, UINT32* code_units) = 0;
  virtual HRESULT STDMETHODCALLTYPE StoreAsync(IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE FlushAsync(IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE DetachBuffer(IBuffer** buffer) = 0;
  virtual HRESULT STDMETHODCALLTYPE DetachStream(IInspectable** stream) = 0;
};

struct IMobileBroadbandDeviceServiceCommandResult : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandDeviceServiceCommandResult, 0xb0f46abb, 0x94d6, 0x44b9,
                        {0xa5, 0x38, 0xf0, 0x81, 0x0b, 0x64, 0x53, 0x89})
  virtual HRESULT STDMETHODCALLTYPE get_StatusCode(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ResponseData(IBuffer** value) = 0;
};

struct ICommandOperation;

// AsyncOperationCompletedHandler<MobileBroadbandDeviceServiceCommandResult>.
struct ICommandCompletedHandler : IUnknown {
  NUVELTA_ABI_INTERFACE(ICommandCompletedHandler, 0x21f0ce4f, 0x8f33, 0x5e71,
                        {0xa4, 0x57, 0xdd, 0xa5, 0x53, 0xb0, 0xd6, 0xbb})
  virtual HRESULT STDMETHODCALLTYPE Invoke(ICommandOperation* operation, AsyncStatus status) = 0;
};

// IAsyncOperation<MobileBroadbandDeviceServiceCommandResult>.
struct ICommandOperation : IInspectable {
  NUVELTA_ABI_INTERFACE(ICommandOperation, 0x2c673aa8, 0x6a35, 0x50fd,
                        {0x94, 0x22, 0x36, 0x15, 0xa1, 0xc2, 0x8c, 0xcb})
  virtual HRESULT STDMETHODCALLTYPE put_Completed(ICommandCompletedHandler* handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Completed(ICommandCompletedHandler** handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  GetResults(IMobileBroadbandDeviceServiceCommandResult** result) = 0;
};

struct IMobileBroadbandDeviceServiceCommandSession : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandDeviceServiceCommandSession, 0xfc098a45, 0x913b, 0x4914,
                        {0xb6, 0xc3, 0xae, 0x63, 0x04, 0x59, 0x3e, 0x75})
  virtual HRESULT STDMETHODCALLTYPE SendQueryCommandAsync(UINT32 command_id, IBuffer* data,
                                                          ICommandOperation** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE SendSetCommandAsync(UINT32 command_id, IBuffer* data,
                                                        ICommandOperation** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE CloseSession() = 0;
};

struct IMobileBroadbandDeviceService : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandDeviceService, 0x22be1a52, 0xbd80, 0x40ac,
                        {0x8e, 0x1f, 0x2e, 0x07, 0x83, 0x6a, 0x3d, 0xbd})
  virtual HRESULT STDMETHODCALLTYPE get_DeviceServiceId(GUID* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SupportedCommands(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE OpenDataSession(IInspectable** session) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  OpenCommandSession(IMobileBroadbandDeviceServiceCommandSession** session) = 0;
};

struct IMobileBroadbandDeviceServiceInformation : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandDeviceServiceInformation, 0x53d69b5b, 0xc4ed, 0x45f0,
                        {0x80, 0x3a, 0xd9, 0x41, 0x7a, 0x6d, 0x98, 0x46})
  virtual HRESULT STDMETHODCALLTYPE get_DeviceServiceId(GUID* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsDataReadSupported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsDataWriteSupported(boolean* value) = 0;
};

// IVectorView<MobileBroadbandDeviceServiceInformation>.
struct IDeviceServiceInformationView : IInspectable {
  NUVELTA_ABI_INTERFACE(IDeviceServiceInformationView, 0xaca7ee14, 0x414a, 0x509c,
                        {0x9d, 0x63, 0x36, 0x1e, 0x66, 0x31, 0xfc, 0x84})
  virtual HRESULT STDMETHODCALLTYPE GetAt(UINT32 index,
                                          IMobileBroadbandDeviceServiceInformation** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE IndexOf(IMobileBroadbandDeviceServiceInformation* item,
                                            UINT32* index, boolean* found) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMany(UINT32 start, UINT32 capacity,
                                            IMobileBroadbandDeviceServiceInformation** items,
                                            UINT32* actual) = 0;
};

struct IMobileBroadbandModem : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandModem, 0xd0356912, 0xe9f9, 0x4f67,
                        {0xa0, 0x3d, 0x43, 0x18, 0x9a, 0x31, 0x6b, 0xf1})
  virtual HRESULT STDMETHODCALLTYPE get_CurrentAccount(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DeviceInformation(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MaxDeviceServiceCommandSizeInBytes(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MaxDeviceServiceDataSizeInBytes(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DeviceServices(IDeviceServiceInformationView** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDeviceService(GUID id,
                                                     IMobileBroadbandDeviceService** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsResetSupported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetAsync(IInspectable** action) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCurrentConfigurationAsync(IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CurrentNetwork(IInspectable** value) = 0;
};

struct IMobileBroadbandModemStatics : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandModemStatics, 0xf99ed637, 0xd6f1, 0x4a78,
                        {0x8c, 0xbc, 0x64, 0x21, 0xa6, 0x50, 0x63, 0xc8})
  virtual HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE FromId(HSTRING id, IMobileBroadbandModem** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDefault(IMobileBroadbandModem** value) = 0;
};

struct IMobileBroadbandAccountEventArgs : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandAccountEventArgs, 0x3853c880, 0x77de, 0x4c04,
                        {0xbe, 0xad, 0xa1, 0x23, 0xb0, 0x8c, 0x9f, 0x59})
  virtual HRESULT STDMETHODCALLTYPE get_NetworkAccountId(HSTRING* value) = 0;
};

struct IMobileBroadbandAccountWatcher;

// TypedEventHandler<MobileBroadbandAccountWatcher, MobileBroadbandAccountEventArgs>.
struct IAccountHandler : IUnknown {
  NUVELTA_ABI_INTERFACE(IAccountHandler, 0x423cc41e, 0xfe8c, 0x5a7d,
                        {0x9f, 0xee, 0xaa, 0xe0, 0x4e, 0xf8, 0x57, 0x00})
  virtual HRESULT STDMETHODCALLTYPE Invoke(IMobileBroadbandAccountWatcher* sender,
                                           IMobileBroadbandAccountEventArgs* args) = 0;
};

// TypedEventHandler<MobileBroadbandAccountWatcher, Object>.
struct IWatcherHandler : IUnknown {
  NUVELTA_ABI_INTERFACE(IWatcherHandler, 0xe4dc9cfc, 0xf462, 0x5afd,
                        {0x85, 0x6d, 0x04, 0xac, 0xe2, 0x29, 0xd0, 0x0e})
  virtual HRESULT STDMETHODCALLTYPE Invoke(IMobileBroadbandAccountWatcher* sender,
                                           IInspectable* args) = 0;
};

// TypedEventHandler<MobileBroadbandAccountWatcher, MobileBroadbandAccountUpdatedEventArgs>.
struct IAccountUpdatedHandler : IUnknown {
  NUVELTA_ABI_INTERFACE(IAccountUpdatedHandler, 0x0e865096, 0x1ffa, 0x5792,
                        {0x8d, 0x4f, 0x86, 0x23, 0xe3, 0xc7, 0x7f, 0x56})
  virtual HRESULT STDMETHODCALLTYPE Invoke(IMobileBroadbandAccountWatcher* sender,
                                           IInspectable* args) = 0;
};

struct IMobileBroadbandAccountWatcher : IInspectable {
  NUVELTA_ABI_INTERFACE(IMobileBroadbandAccountWatcher, 0x6bf3335e, 0x23b5, 0x449f,
                        {0x92, 0x8d, 0x5e, 0x0d, 0x3e, 0x04, 0x47, 0x1d})
  virtual HRESULT STDMETHODCALLTYPE add_AccountAdded(IAccountHandler* handler,
                                                     EventToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_AccountAdded(EventToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_AccountUpdated(IAccountUpdatedHandler* handler,
                                                       EventToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_AccountUpdated(EventToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_AccountRemoved(IAccountHandler* handler,
                                                       EventToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_AccountRemoved(EventToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_EnumerationCompleted(IWatcherHandler* handler,
                                                             EventToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_EnumerationCompleted(EventToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Stopped(IWatcherHandler* handler, EventToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Stopped(EventToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Status(WatcherStatus* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Start() = 0;
  virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
};

#undef NUVELTA_ABI_INTERFACE
#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif

// The identifier of an interface, of one above or of the platform's headers.
template <class Interface>
constexpr GUID IdOf() {
  if constexpr (requires { Interface::kId; }) {
    return Interface::kId;
  } else {
    return __uuidof(Interface);
  }
}

}  // namespace nuvelta::windows::abi
