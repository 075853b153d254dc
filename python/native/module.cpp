// The extension module: values in and out. What they mean to a user is in the package around it.

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "python/native/interpreter.h"
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

template <typename Work>
auto unlocked(Work work) {
  const Unlocked released;
  return work();
}

bool says_yes(const py::object& confirm, const py::list& warnings) {
  CallOfPython call;
  PyObject* said =
      call.completed(PyObject_CallFunctionObjArgs(confirm.ptr(), warnings.ptr(), nullptr));
  if (said == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(said).cast<bool>();
}

py::tuple commit(PluggedCard& card, const std::vector<Edit>& edits, const py::object& confirm,
                 bool all, std::vector<std::string> only, bool keep) {
  CommitChoice choice;
  choice.keep = keep;
  choice.options.all = all;
  choice.options.only = std::move(only);
  choice.options.confirm = [&confirm](const std::vector<tarnd::Answer>& warnings) {
    const Locked locked;
    return says_yes(confirm, list_of(warnings));
  };
  return tuple_of(unlocked([&] { return card.commit(edits, choice); }));
}

// The figures of a load as Python has them, in plain tuples.
using Number = std::uint32_t;
using LimitsRecord =
    std::tuple<bool, Number, Number, Number, std::optional<Number>, Number, Number, Number>;
using LinkRecord =
    std::tuple<std::string, Number, std::optional<Number>, std::optional<Number>, std::string>;
using LineProfileRecord = std::tuple<std::string, Number, Number, Number, Number>;
using LoadRecord = std::tuple<LimitsRecord, std::vector<LinkRecord>, std::vector<LineProfileRecord>,
                              std::uint32_t>;

LimitsRecord record_of(const tarnd::CardLimits& limits) {
  return {limits.checks_bandwidth, limits.capacity.total, limits.capacity.fixed,
          limits.onu_overhead,     limits.onus_per_link,  limits.dynamic_tconts,
          limits.static_tconts,    limits.service_ports};
}

LinkRecord record_of(const tarnd::LinkLoad& link) {
  if (!link.reserved.has_value()) {
    return {link.path, link.onus, std::nullopt, std::nullopt, link.rejected};
  }
  return {link.path, link.onus, link.reserved->total, link.reserved->fixed, link.rejected};
}

LineProfileRecord record_of(const tarnd::LineProfileLoad& line) {
  return {line.name, line.reserved.total, line.reserved.fixed, line.dynamic_tconts,
          line.static_tconts};
}

LoadRecord record_of(const tarnd::CardLoad& load) {
  LoadRecord record;
  auto& [limits, links, line_profiles, service_ports] = record;
  limits = record_of(load.limits);
  for (const tarnd::LinkLoad& link : load.links) links.push_back(record_of(link));
  for (const auto& line : load.line_profiles) line_profiles.push_back(record_of(line));
  service_ports = load.service_ports;
  return record;
}

tarnd::CardLimits limits_of(const LimitsRecord& record) {
  tarnd::CardLimits limits;
  std::tie(limits.checks_bandwidth, limits.capacity.total, limits.capacity.fixed,
           limits.onu_overhead, limits.onus_per_link, limits.dynamic_tconts, limits.static_tconts,
           limits.service_ports) = record;
  return limits;
}

tarnd::LinkLoad link_of(const LinkRecord& record) {
  const auto& [path, onus, total, fixed, rejected] = record;
  tarnd::LinkLoad link{path, onus, std::nullopt, rejected};
  if (total.has_value() && fixed.has_value()) link.reserved = {*total, *fixed};
  return link;
}

tarnd::CardLoad load_of(const LoadRecord& record) {
  const auto& [limits, links, line_profiles, service_ports] = record;
  tarnd::CardLoad load;
  load.limits = limits_of(limits);
  for (const LinkRecord& link : links) load.links.push_back(link_of(link));
  for (const auto& [name, total, fixed, dynamic_tconts, static_tconts] : line_profiles) {
    load.line_profiles.push_back({name, {total, fixed}, dynamic_tconts, static_tconts});
  }
  load.service_ports = service_ports;
  return load;
}

using FitRecord = std::tuple<std::string, std::optional<Number>, std::string>;

std::vector<FitRecord> fit(const LoadRecord& record, const std::string& line_profile) {
  const tarnd::CardLoad load = load_of(record);
  const tarnd::LineProfileLoad& added = tarnd::find_line_profile(load, line_profile);
  std::vector<FitRecord> fits;
  for (const tarnd::LinkLoad& link : load.links) {
    const tarnd::Fit of_link = tarnd::fit(load.limits, link, added);
    fits.emplace_back(link.path, of_link.onus, of_link.limit);
  }
  return fits;
}

// The card waits for its turn, and the thread whose turn it is may wait for Python's lock.
struct DestroyUnlocked {
  void operator()(PluggedCard* card) const {
    const Unlocked released;
    delete card;
  }
};

void bind_card(py::module_& module) {
  py::class_<Edit>(module, "Edit")
      .def(py::init([](std::string kind, std::string text, std::string name, bool has_lines) {
             return Edit{std::move(kind), std::move(text), std::move(name), has_lines};
           }),
           py::arg("kind"), py::arg("text"), py::arg("name") = "", py::arg("has_lines") = true);
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
             const Audit audit = unlocked([&] { return card.audit(edits); });
             return py::make_tuple(tuple_of(audit.verdict), record_of(audit.load));
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
      .def("load",
           [](PluggedCard& card) { return record_of(unlocked([&card] { return card.load(); })); });
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
  const py::object text = text_of(error.what());
  const py::object file = text_or_none(error.file());
  const py::object path = text_or_none(error.path());
  CallOfPython call;
  PyObject* raised = call.completed(PyObject_CallFunctionObjArgs(type.ptr(), text.ptr(), file.ptr(),
                                                                 line.ptr(), path.ptr(), nullptr));
  if (raised == nullptr) throw py::error_already_set();
  PyErr_SetObject(type.ptr(), py::reinterpret_steal<py::object>(raised).ptr());
}

// Before the interpreter ends, without its lock. Threads that work come to an end first.
void stop() {
  Turn::take_for_good();
  keep_other_threads_out();
}

}  // namespace

PYBIND11_MODULE(_native, module) {
  module.def("set_places", &set_places);
  module.def("points", &list_points);
  module.def("fit", &fit);
  bind_card(module);
  // The exception is Python's own class, so that it is documented and typed with the rest.
  static py::object input_error;
  module.def("stop", &stop, py::call_guard<Unlocked>());
  module.def("set_input_error", [](py::object type) { input_error = std::move(type); });
  // NOLINTNEXTLINE(performance-unnecessary-value-param): pybind11 wants this type
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const UnusableInput& error) {
      raise_input_error(input_error, error);
    } catch (const tarnd::InputError& error) {
      raise_input_error(input_error, UnusableInput(error));
    }
  });
}

}  // namespace gponval::python
