// The cr forms of control messages that have a body in common with a plain form, and the sentinels.
#include <dlfcn.h>

#include <set>

#include "behaviour/bundles_by_hand.h"
#include "behaviour/messages_spied.h"

namespace {

using family::Bundle;
using family::Control;
using family::Handle;
using family::Kind;

constexpr uint32_t instance = 9;
constexpr uint32_t room = 256;

struct Form {
    const char *what;
    uint32_t (*hand)(const Bundle &, Kind, ork_handle *, char *buffer, uint32_t *err);
    uint32_t (*library)(const Control &, ork_handle *, char *buffer);
};

uint8_t *bytes(char *buffer) {
    return reinterpret_cast<uint8_t *>(buffer);
}

const Form forms_in_common[] = {
    {"marshal",
     [](const Bundle &b, Kind kind, ork_handle *handle, char *buffer, uint32_t *err) {
         return by_hand::marshal(b, kind, handle, instance, bytes(buffer), room, err);
     },
     [](const Control &c, ork_handle *handle, char *buffer) { return c.marshal_cr(handle, bytes(buffer), room); }},
    {"print",
     [](const Bundle &b, Kind kind, ork_handle *handle, char *buffer, uint32_t *err) {
         return by_hand::print(b, kind, handle, instance, buffer, room, err);
     },
     [](const Control &c, ork_handle *handle, char *buffer) { return c.print_cr(handle, buffer, room); }},
    {"toxml",
     [](const Bundle &b, Kind kind, ork_handle *handle, char *buffer, uint32_t *err) {
         return by_hand::to_xml(b, kind, handle, instance, buffer, room, err);
     },
     [](const Control &c, ork_handle *handle, char *buffer) { return c.toxml_cr(handle, buffer, room); }},
};

class BundleCrForms : public testing::TestWithParam<Bundle> {
protected:
    const Bundle bundle = GetParam();

    struct Done {
        std::vector<std::string> calls;
        uint32_t result;
        std::string buffer;
    };
    Done run(const Form &form, Kind kind, bool library) const {
        const Handle handle = family::make_handle([](ork_options &options) { options.cr_instance = instance; });
        if (kind != family::start) {
            spied::open(bundle, handle.get());
        }
        std::string buffer(room, '\0');
        uint32_t err = 0;
        spy::forget_names();
        spy::name(buffer.data(), room, "buffer");
        spy::name_at(library ? &handle->cr_error : &err, "cr_error");
        Done done{};
        {
            const spy::Log log;
            done.result = library ? form.library(bundle.control(kind), handle.get(), buffer.data())
                                  : form.hand(bundle, kind, handle.get(), buffer.data(), &err);
            done.calls = log.calls();
        }
        done.buffer = buffer;
        spied::close(handle.get());
        return done;
    }
};

TEST_P(BundleCrForms, DoTheSameWithTheHandlesInstanceAndError) {
    for (const Kind kind : {family::start, family::abort, family::commit}) {
        for (const Form &form : forms_in_common) {
            const Done made = run(form, kind, true);
            const Done hand = run(form, kind, false);
            EXPECT_CALLS(made.calls, hand.calls) << form.what << " " << kind;
            EXPECT_EQ(made.result, hand.result) << form.what << " " << kind;
            EXPECT_EQ(made.buffer, hand.buffer) << form.what << " " << kind;
        }
        std::vector<std::string> sent = {"ork_clear_last_error()", "_ork_message_header_marshal(9,buffer,?,27,cr_error)"};
        if (kind != family::start) {
            sent.emplace_back("bundle_send_message_list_destroy(9,cr_error)");
        }
        EXPECT_CALLS(run(forms_in_common[0], kind, true).calls, sent);
    }
}

INSTANTIATE_TEST_SUITE_P(All, BundleCrForms, testing::ValuesIn(family::bundles()), family::ByName());

TEST(ControlSentinels, EachControlMessageHasOneOfItsOwnInTheLibrary) {
    const Handle handles[] = {family::make_handle(), family::make_handle()};
    handles[0]->cr_error = handles[1]->cr_error = 5;
    std::set<const void *> found;
    for (const Control &control : family::controls()) {
        const void *const sentinel = control.create_cr(handles[0].get());
        EXPECT_EQ(control.create_cr(handles[1].get()), sentinel) << control.name();
        Dl_info place{};
        Dl_info function{};
        ASSERT_NE(dladdr(sentinel, &place), 0) << control.name();
        dladdr(reinterpret_cast<const void *>(control.unmarshal_function()), &function);
        EXPECT_EQ(place.dli_fbase, function.dli_fbase) << control.name();
        found.insert(sentinel);
    }
    EXPECT_EQ(found.size(), 54u);
    handles[0]->cr_error = handles[1]->cr_error = 0;
}

}  // namespace
