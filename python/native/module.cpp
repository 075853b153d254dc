// The extension module: values in and out. What they mean to a user is in the package around it.

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "python/native/plugged_card.h"
#include "python/native/process.h"

namespace py = pybind11;

namespace gponval::python {
namespace {

// Texts of the plug-in are bytes; one that was cut within a letter is no proper UTF-8.
py::str text_of(std::string_view bytes) {
  PyObject* text =
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "replace");
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(text);
}

py::tuple tuple_of(const tarnd::Answer& answer) {
  return py::make_tuple(answer.request, text_of(answer.path), to_string(answer.result),
                        text_of(answer.text), answer.msecs);
}

py::list list_of(const std::vector<tarnd::Answer>& answers) {
  py::list list;
  for (const tarnd::Answer& answer : answers) list.append(tuple_of(answer));
  return list;
}

py::tuple tuple_of(const ReportWithText& with_text) {
  const tarnd::CommitReport& report = with_text.report;
  py::list messages;
  for (const std::string& message : report.messages) messages.append(text_of(message));
  return py::make_tuple(to_string(report.result), list_of(report.answers), messages,
                        text_of(with_text.text));
}

// Without Python's lock, so that other threads go on. A daemon thread that wants the lock back
// while the interpreter ends is ended there by an unwinding that must pass, so the destructor may
// throw.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;
  ~Unlocked() noexcept(false) { PyEval_RestoreThread(state_); }

 private:
  PyThreadState* state_;
};

template <typename Work>
auto unlocked(Work work) {
  const Unlocked released;
  return work();
}

py::tuple commit(PluggedCard& card, const std::vector<Edit>& edits, const py::object& confirm,
                 bool all, std::vector<std::string> only, bool keep) {
  CommitChoice choice;
  choice.keep = keep;
  choice.options.all = all;
  choice.options.only = std::move(only);
  choice.options.confirm = [&confirm](const std::vector<tarnd::Answer>& warnings) {
    const py::gil_scoped_acquire locked;
    return confirm(list_of(warnings)).cast<bool>();
  };
  return tuple_of(unlocked([&] { return card.commit(edits, choice); }));
}

py::dict dict_of(const tarnd::CardLimits& limits) {
  using namespace py::literals;
  return py::dict(
      "checks_bandwidth"_a = limits.checks_bandwidth, "total_capacity"_a = limits.capacity.total,
      "fixed_capacity"_a = limits.capacity.fixed, "onu_overhead"_a = limits.onu_overhead,
      "onus_per_link"_a = limits.onus_per_link, "dynamic_tconts"_a = limits.dynamic_tconts,
      "static_tconts"_a = limits.static_tconts, "service_ports"_a = limits.service_ports);
}

void bind_load(py::module_& module) {
  using tarnd::CardLoad;
  using tarnd::LineProfileLoad;
  using tarnd::LinkLoad;
  py::class_<LinkLoad>(module, "LinkLoad")
      .def_readonly("path", &LinkLoad::path)
      .def_readonly("onus", &LinkLoad::onus)
      .def_property_readonly(
          "total",
          [](const LinkLoad& link) {
            return link.reserved.has_value() ? std::optional(link.reserved->total) : std::nullopt;
          })
      .def_property_readonly(
          "fixed",
          [](const LinkLoad& link) {
            return link.reserved.has_value() ? std::optional(link.reserved->fixed) : std::nullopt;
          })
      .def_readonly("rejected", &LinkLoad::rejected);
  py::class_<LineProfileLoad>(module, "LineProfileLoad")
      .def_readonly("name", &LineProfileLoad::name)
      .def_property_readonly("total",
                             [](const LineProfileLoad& line) { return line.reserved.total; })
      .def_property_readonly("fixed",
                             [](const LineProfileLoad& line) { return line.reserved.fixed; })
      .def_readonly("dynamic_tconts", &LineProfileLoad::dynamic_tconts)
      .def_readonly("static_tconts", &LineProfileLoad::static_tconts);
  py::class_<CardLoad>(module, "CardLoad")
      .def_property_readonly("limits", [](const CardLoad& load) { return dict_of(load.limits); })
      .def_readonly("links", &CardLoad::links)
      .def_readonly("line_profiles", &CardLoad::line_profiles)
      .def_readonly("service_ports", &CardLoad::service_ports)
      .def("fit", [](const CardLoad& load, const LinkLoad& link, const std::string& name) {
        const tarnd::Fit fits = tarnd::fit(load.limits, link, tarnd::find_line_profile(load, name));
        return py::make_tuple(fits.onus, fits.limit);
      });
}

// The card waits for its turn, and the thread whose turn it is may wait for Python's lock.
struct DestroyUnlocked {
  void operator()(PluggedCard* card) const {
    const py::gil_scoped_release released;
    delete card;
  }
};

void bind_card(py::module_& module) {
  py::class_<Edit>(module, "Edit")
      .def(py::init([](std::string kind, std::string text, std::string name) {
             return Edit{std::move(kind), std::move(text), std::move(name)};
           }),
           py::arg("kind"), py::arg("text"), py::arg("name") = "");
  using Released = py::call_guard<Unlocked>;
  py::class_<PluggedCard, std::unique_ptr<PluggedCard, DestroyUnlocked>>(module, "Card")
      .def(py::init<const Edit&, const std::optional<Edit>&>(), Released())
      .def("commit", &commit)
      .def("request",
           [](PluggedCard& card, const std::string& name, const std::string& keypath,
              const std::optional<std::string>& value, const std::vector<Edit>& edits) {
             return tuple_of(unlocked([&] { return card.request(name, keypath, value, edits); }));
           })
      .def("audit",
           [](PluggedCard& card, const std::vector<Edit>& edits) {
             Audit audit = unlocked([&] { return card.audit(edits); });
             return py::make_tuple(tuple_of(audit.verdict), std::move(audit.load));
           })
      .def("changes",
           [](PluggedCard& card, const std::vector<Edit>& edits) {
             const PrintedChanges changes = unlocked([&] { return card.changes(edits); });
             return py::make_tuple(text_of(changes.json), text_of(changes.text));
           })
      .def("print",
           [](PluggedCard& card, const std::string& format) {
             const auto wanted =
                 format == "json" ? tarnd::store::Format::kJson : tarnd::store::Format::kXml;
             return unlocked([&] { return card.print(wanted); });
           })
      .def("get",
           [](PluggedCard& card, const std::string& keypath) {
             const Found found = unlocked([&] { return card.get(keypath); });
             return py::make_tuple(found.nodes, found.one_of_several, found.all);
           })
      .def("load", &PluggedCard::load, Released());
}

py::list list_points() {
  py::list list;
  for (const tarnd::PointInModel& in_model : unlocked([] { return points(); })) {
    list.append(py::make_tuple(in_model.point->request, in_model.node->path(),
                               in_model.point->call_once, in_model.point->priority));
  }
  return list;
}

py::object text_or_none(const std::string& text) {
  return text.empty() ? py::object(py::none()) : text_of(text);
}

// Arguments: text, file or None, line or None, path or None.
void raise_input_error(const py::object& type, const UnusableInput& error) {
  const py::object line = error.line() == 0 ? py::object(py::none()) : py::int_(error.line());
  const py::object raised =
      type(text_of(error.what()), text_or_none(error.file()), line, text_or_none(error.path()));
  PyErr_SetObject(type.ptr(), raised.ptr());
}

}  // namespace

PYBIND11_MODULE(_native, module) {
  module.def("set_places", &set_places);
  module.def("points", &list_points);
  bind_load(module);
  bind_card(module);
  // The exception is Python's own class, so that it is documented and typed with the rest.
  static py::object input_error;
  module.def("stop", &Turn::take_for_good, py::call_guard<Unlocked>());
  module.def("set_input_error", [](py::object type) { input_error = std::move(type); });
  // NOLINTNEXTLINE(performance-unnecessary-value-param): pybind11 wants this type
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const UnusableInput& error) {
      raise_input_error(input_error, error);
    } catch (const tarnd::InputError& error) {
      raise_input_error(input_error, UnusableInput(error, ""));
    }
  });
}

}  // namespace gponval::python
