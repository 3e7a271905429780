#include "services/system_record.h"

#include "services/resident_service.h"

#include <array>
#include <system_error>

namespace pyrux {
namespace {

template <class Number>
struct Texts;
template <>
struct Texts<float> {
    static constexpr std::string_view noNumber = "invalid stof argument";
    static constexpr std::string_view outOfRange = "stof argument out of range";
};
template <>
struct Texts<std::int32_t> {
    static constexpr std::string_view noNumber = "invalid stoi argument";
    static constexpr std::string_view outOfRange = "stoi argument out of range";
};

template <auto cell>
std::string_view readCell(std::string_view text, SysDetailRecord& record)
{
    using Number = std::remove_reference_t<decltype(record.*cell)>;
    const std::errc error = resident::readNumber(text, record.*cell);
    if (error == std::errc())
        return {};
    return error == std::errc::result_out_of_range ? Texts<Number>::outOfRange : Texts<Number>::noNumber;
}

using Record = SysDetailRecord;

/// Where the fields go, in the order of the reply.
constexpr std::string_view (*cells[])(std::string_view, Record&) = {
    readCell<&Record::field0>,  readCell<&Record::field1>,  readCell<&Record::field2>,
    readCell<&Record::field3>,  readCell<&Record::field4>,  readCell<&Record::field5>,
    readCell<&Record::field6>,  readCell<&Record::field7>,  readCell<&Record::field8>,
    readCell<&Record::field9>,  readCell<&Record::field10>, readCell<&Record::field11>,
    readCell<&Record::field12>, readCell<&Record::field13>, readCell<&Record::field14>,
};

} // namespace

std::string_view readSystemRecord(std::string_view reply, SysDetailRecord& record)
{
    std::array<std::string_view, std::size(cells)> fields;
    for (std::string_view& field : fields) {
        // A semicolon at the end of the reply begins no further field.
        if (reply.empty())
            return {};
        const auto end = reply.find(';');
        field = reply.substr(0, end);
        reply.remove_prefix(end == std::string_view::npos ? reply.size() : end + 1);
    }
    SysDetailRecord read{};
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (const std::string_view failure = cells[i](fields[i], read); !failure.empty())
            return failure;
    record = read;
    return {};
}

} // namespace pyrux
