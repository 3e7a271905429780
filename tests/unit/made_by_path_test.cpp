// Host objects whose protocol class decides from the path what it makes, and what `openFailed` then says.

#include "core/registry.h"
#include "devices/host_object.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace pyrux {
namespace {

/// The interface of a wireless model whose list has a destructor.
class ToyInterface {
public:
    virtual _error kind(std::string* text) = 0;
    virtual void* destroy(std::uint32_t flags) = 0;
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~ToyInterface() = default;
};

/// The device on its cable. A path with "receiver" in it makes another class, one with "absent" fails, one
/// with "unlinked" cannot work yet.
class Toy : public ProtocolObject {
public:
    static constexpr const ModelRow& model = modelRow("rd220");
    static std::unique_ptr<Toy> make(const std::string& path);

    explicit Toy(const std::string& path)
        : failure(path.find("absent") != std::string::npos     ? 1
                  : path.find("unlinked") != std::string::npos ? 2
                                                               : 0)
    {
        ++alive;
    }
    ~Toy() override { --alive; }

    std::int32_t openFailed() const override { return failure; }
    void setUnplugged(bool) override {}
    void abort() override {}
    void sayGoodbye() override { ++goodbyes; }
    bool endThreads(std::chrono::steady_clock::time_point) override { return true; }

    virtual _error kind(std::string* text)
    {
        *text = "cable";
        return E_OK;
    }

    static inline std::atomic<int> alive{0};
    static inline std::atomic<int> goodbyes{0};

private:
    const std::int32_t failure;
};

class ToyReceiver final : public Toy {
public:
    using Toy::Toy;
    _error kind(std::string* text) override
    {
        *text = "receiver";
        return E_OK;
    }
};

std::unique_ptr<Toy> Toy::make(const std::string& path)
{
    if (path.find("receiver") != std::string::npos)
        return std::make_unique<ToyReceiver>(path);
    return std::make_unique<Toy>(path);
}

class ToyHost final : public DestroyableHost<HostObject<Toy, ToyInterface>> {
public:
    using DestroyableHost::DestroyableHost;
    _error kind(std::string* text) override { return FORWARD(kind(text)); }
};

ToyInterface* make(const char* path)
{
    return static_cast<ToyInterface*>(findOrMakeHost(ToyHost::model(), path, 1, makeHost<ToyHost>));
}

/// The fields that a host may know of, directly after the two virtual table pointers.
struct Fields {
    void* tables[2];
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};
Fields fieldsOf(const void* host)
{
    Fields fields;
    std::memcpy(static_cast<void*>(&fields), host, sizeof fields);
    return fields;
}

class MadeByPath : public testing::Test {
protected:
    MadeByPath() { Toy::alive = Toy::goodbyes = 0; }
    ~MadeByPath() override
    {
        const std::lock_guard lock(registry().mutex);
        registry().exitAll();
    }
    std::string text;
};

TEST_F(MadeByPath, aPathNamesTheClass)
{
    ASSERT_EQ(make("toy 1")->kind(&text), E_OK);
    EXPECT_EQ(text, "cable");
    ASSERT_EQ(make("toy receiver 1")->kind(&text), E_OK);
    EXPECT_EQ(text, "receiver");
    EXPECT_EQ(make("toy 1"), make("toy 1"));
    EXPECT_EQ(fieldsOf(make("toy 1")).openFailed, 0);
    EXPECT_EQ(fieldsOf(make("toy 1")).closed, 0);
    EXPECT_NE(fieldsOf(make("toy 1")).device, nullptr);
}

TEST_F(MadeByPath, oneThatCannotBeOpenedIsNone)
{
    EXPECT_EQ(make("absent toy"), nullptr);
    EXPECT_EQ(Toy::alive, 0);
    const std::lock_guard lock(registry().mutex);
    EXPECT_EQ(registry().find("absent toy"), nullptr);
}

TEST_F(MadeByPath, oneThatCannotWorkYetIsAClosedObject)
{
    ToyInterface* const host = make("unlinked receiver");
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(Toy::alive, 0);
    EXPECT_EQ(fieldsOf(host).openFailed, 2);
    EXPECT_EQ(fieldsOf(host).closed, 1);
    EXPECT_EQ(fieldsOf(host).device, nullptr);
    EXPECT_EQ(host->kind(&text), E_CLOSED);
    EXPECT_EQ(make("unlinked receiver"), host); // it stays in the registry
    EXPECT_EQ(host->exit_device(0), E_OK);
    EXPECT_EQ(Toy::goodbyes, 0);
}

TEST_F(MadeByPath, aDestructorIsOneOrdinaryEntry)
{
    ToyInterface* const host = make("toy 2");
    EXPECT_EQ(host->destroy(1), host);
    EXPECT_EQ(Toy::alive, 0);
    EXPECT_EQ(Toy::goodbyes, 1);
    EXPECT_EQ(host->kind(&text), E_CLOSED); // the object stays
    EXPECT_EQ(host->destroy(0), host);
    EXPECT_EQ(Toy::goodbyes, 1);
}

} // namespace
} // namespace pyrux
