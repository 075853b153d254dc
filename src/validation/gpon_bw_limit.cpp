#include "gpon_bw_limit.h"

#include <utility>

#include "confd_get_objects_itf.h"
#include "gpon_capabilities.h"
#include "gpon_vald_trace_itf.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

std::unordered_map<std::string, bandwidth_ctx> bandwidth_prof_to_bandwidth;
std::unordered_map<std::string, bandwidth_ctx> line_prof_to_bandwidth;

namespace {

// The functions in whose names the helpers below write to the trace.
constexpr const char* kLoadAllLines = "loadAllLines";
constexpr const char* kLoadAllTconts = "loadAllTconts";
constexpr const char* kPonlinkCheck = "validate_ponlink_bw";
constexpr const char* kGlobalCheck = "validate_max_bandwidth_global";

constexpr const char* kBwProfiles = "/config/profile/gpon/bandwidth-profile";
constexpr const char* kLineProfiles = "/config/profile/gpon/line-profile";

// Positions in the value array of a bandwidth profile: its name, and the figures (kbit/s) of the
// five traffic types.
enum BwValueOffset {
  BW_CONFD_VAL_OFFSET_NAME = 0,
  BW_CONFD_VAL_OFFSET_FX_T1 = 3,
  BW_CONFD_VAL_OFFSET_AS_T2 = 5,
  BW_CONFD_VAL_OFFSET_AS_T3 = 7,
  BW_CONFD_VAL_OFFSET_MX_T3 = 8,
  BW_CONFD_VAL_OFFSET_MX_T4 = 10,
  BW_CONFD_VAL_OFFSET_FX_T5 = 12,
  BW_CONFD_VAL_OFFSET_AS_T5 = 13,
  BW_CONFD_VAL_OFFSET_MX_T5 = 14,
};
constexpr unsigned int kBwValues = 15;
constexpr unsigned int kBwBatch = 64;

// Positions in the value array of a TCONT.
enum TcontValueOffset {
  TCONT_CONFD_VAL_OFFSET_ID = 0,
  TCONT_CONFD_VAL_OFFSET_BW = 1,
};
constexpr unsigned int kTcontValues = 2;
constexpr unsigned int kTcontBatch = 6;

bool is_present(const confd_value_t& value) {
  return value.type != C_NOEXISTS;
}

void release_names(ConfdGetObjsItf& profiles, int from, int to) {
  for (int i = from; i < to; ++i) {
    confd_free_value(&profiles.object(i)[BW_CONFD_VAL_OFFSET_NAME]);
  }
}

/// Adds the profiles of one batch to the table, up to one without a traffic type.
int load_bw_batch(ConfdGetObjsItf& profiles, int count) {
  for (int i = 0; i < count; ++i) {
    std::string name;
    std::uint32_t fixed = 0;
    std::uint32_t total = 0;
    if (loadBwProf(profiles.object(i), name, fixed, total) != CONFD_OK) {
      release_names(profiles, i + 1, count);
      return CONFD_ERR;
    }
    bandwidth_prof_to_bandwidth.emplace(name, bandwidth_ctx{total, fixed, 0, 0});
  }
  return CONFD_OK;
}

void load_line(int sock, confd_trans_ctx* tctx, const confd_value_t& key) {
  const std::string line = valid::value_text(&key);
  VALID_TRACE_AS(kLoadAllLines, kTraceDetail, "Loading line %s", line.c_str());

  bwctx ctx;
  // loadAllTconts traces unknown bandwidth profiles; the line profile is added nevertheless.
  loadAllTconts(sock, tctx, std::string(kLineProfiles) + "{" + line + "}/tcont", ctx);

  VALID_TRACE_AS(kLoadAllLines, kTraceDetail, "Line %s has dynamic=%d static=%d TCONTs",
                 line.c_str(), static_cast<int>(ctx.sums.dynamic_count),
                 static_cast<int>(ctx.sums.static_count));
  line_prof_to_bandwidth.emplace(line, ctx.sums);
}

/// The whole bandwidth is fixed, and it is not 0.
bool is_static(const bandwidth_ctx& profile) {
  return profile.fixed == profile.total && profile.fixed != 0;
}

void add_tcont(const std::string& bw_name, bwctx& ctx) {
  const auto found = bandwidth_prof_to_bandwidth.find(bw_name);
  if (found == bandwidth_prof_to_bandwidth.end()) {
    VALID_TRACE_AS(kLoadAllTconts, kTraceFlow, "BW NOT found! BW name: %s. fixed=%d total=%d",
                   bw_name.c_str(), 0, 0);
    ctx.err = CONFD_ERR;
    ++ctx.sums.dynamic_count;
    return;
  }
  const bandwidth_ctx& profile = found->second;
  VALID_TRACE_AS(kLoadAllTconts, kTraceDetail, "BW found! BW name: %s. fixed=%d total=%d",
                 bw_name.c_str(), static_cast<int>(profile.fixed), static_cast<int>(profile.total));
  ctx.sums.total += profile.total;
  ctx.sums.fixed += profile.fixed;
  ++(is_static(profile) ? ctx.sums.static_count : ctx.sums.dynamic_count);
}

void load_tcont(confd_value_t* cur_val, bwctx& ctx) {
  const std::string bw_name = CONFD_GET_CBUFPTR(&cur_val[TCONT_CONFD_VAL_OFFSET_BW]);
  const std::uint32_t id = CONFD_GET_UINT32(&cur_val[TCONT_CONFD_VAL_OFFSET_ID]);
  confd_free_value(&cur_val[TCONT_CONFD_VAL_OFFSET_BW]);

  VALID_TRACE_AS(kLoadAllTconts, kTraceDetail, "tcont=%d bw=%s", static_cast<int>(id),
                 bw_name.c_str());
  add_tcont(bw_name, ctx);
}

}  // namespace

int loadAllBws(int sock, confd_trans_ctx* tctx) {
  const cl_ElapsedTime timer;
  ConfdGetObjsItf profiles(kBwValues, kBwBatch, kBwProfiles, sock, tctx, true);
  int result = CONFD_OK;
  for (int count = profiles.getObjects(); count > 0; count = profiles.getObjects()) {
    result = load_bw_batch(profiles, count);
  }
  VALID_TRACE(kTraceDetail, "Took %d msecs to load all bandwidth profiles from ConfD",
              static_cast<int>(timer.get_elapsed_time_msec()));
  return result;
}

int loadBwProf(confd_value_t* values, std::string& name, std::uint32_t& fixed,
               std::uint32_t& total) {
  name = CONFD_GET_CBUFPTR(&values[BW_CONFD_VAL_OFFSET_NAME]);
  confd_free_value(&values[BW_CONFD_VAL_OFFSET_NAME]);

  if (is_present(values[BW_CONFD_VAL_OFFSET_FX_T1])) {
    fixed = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_FX_T1]);
    total = fixed;
    VALID_TRACE_IF(kTraceDetail, "BW name: %s. type-1. fixed=%d", name.c_str(),
                   static_cast<int>(fixed));
    return CONFD_OK;
  }
  if (is_present(values[BW_CONFD_VAL_OFFSET_AS_T2])) {
    fixed = 0;
    total = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_AS_T2]);
    VALID_TRACE_IF(kTraceDetail, "BW name: %s. type-2. assured=%d", name.c_str(),
                   static_cast<int>(total));
    return CONFD_OK;
  }
  if (is_present(values[BW_CONFD_VAL_OFFSET_AS_T3])) {
    fixed = 0;
    total = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_AS_T3]);
    const std::uint32_t maximum = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_MX_T3]);
    VALID_TRACE_IF(kTraceDetail, "BW name: %s. type-3. assured=%d max=%d", name.c_str(),
                   static_cast<int>(total), static_cast<int>(maximum));
    return CONFD_OK;
  }
  if (is_present(values[BW_CONFD_VAL_OFFSET_MX_T4])) {
    fixed = 0;
    total = 0;  // best effort reserves nothing
    const std::uint32_t maximum = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_MX_T4]);
    VALID_TRACE_IF(kTraceDetail, "BW name: %s. type-4. max=%d", name.c_str(),
                   static_cast<int>(maximum));
    return CONFD_OK;
  }
  if (is_present(values[BW_CONFD_VAL_OFFSET_FX_T5])) {
    fixed = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_FX_T5]);
    total = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_AS_T5]);  // without the fixed part
    const std::uint32_t maximum = CONFD_GET_UINT32(&values[BW_CONFD_VAL_OFFSET_MX_T5]);
    VALID_TRACE_IF(kTraceDetail, "BW name: %s. type-5. fixed=%d assured=%d max=%d", name.c_str(),
                   static_cast<int>(fixed), static_cast<int>(total), static_cast<int>(maximum));
    return CONFD_OK;
  }
  return CONFD_ERR;
}

int loadAllLines(int sock, confd_trans_ctx* tctx) {
  const cl_ElapsedTime timer;
  {
    valid::Cursor lines(sock, tctx, kLineProfiles);
    while (lines.next()) {
      load_line(sock, tctx, lines.entry().keys[0]);
    }
  }
  VALID_TRACE(kTraceDetail, "Took %d msecs to load all line profiles from ConfD",
              static_cast<int>(timer.get_elapsed_time_msec()));
  return CONFD_OK;
}

int loadAllTconts(std::int32_t sock, confd_trans_ctx* tctx, std::string path, bwctx& ctx) {
  const cl_ElapsedTime timer;
  ConfdGetObjsItf tconts(kTcontValues, kTcontBatch, std::move(path), sock, tctx, true);
  while (ctx.err == CONFD_OK) {
    const int count = tconts.getObjects();
    if (count <= 0) {
      break;
    }
    for (int i = 0; i < count; ++i) {
      load_tcont(tconts.object(i), ctx);
    }
  }
  VALID_TRACE(kTraceDetail, "Took %d msecs to load all tconts from ConfD (err=%d)",
              static_cast<int>(timer.get_elapsed_time_msec()), ctx.err);
  return ctx.err;
}

namespace {

constexpr const char* kGponLinks = "/config/interface/gpon";
constexpr const char* kLineProfileOfOnu = "profile-references/line-profile";

/// The sum of what the ONUs of one link reserve.
struct LinkLoad {
  std::uint32_t onus = 0;
  std::uint32_t total = 0;
  std::uint32_t fixed = 0;
  std::string error;  ///< names the line profiles that do not exist
};

void add_onu(const confd_value_t& line_profile, LinkLoad& load) {
  const std::string line = valid::value_text(&line_profile);
  const auto found = line_prof_to_bandwidth.find(line);
  if (found == line_prof_to_bandwidth.end()) {
    VALID_TRACE_AS(kPonlinkCheck, kTraceFlow, "Line profile %s not found.", line.c_str());
    load.error += "Line profile " + line + " doesn't not exist.";
    return;
  }
  load.total += found->second.total;
  load.fixed += found->second.fixed;
}

/// Adds up the ONUs. Stops after the chunk with the first missing line profile.
void add_all_onus(valid::Query& onus, LinkLoad& load) {
  while (const confd_query_result* chunk = onus.next_chunk()) {
    for (int i = 0; i < chunk->nresults; ++i) {
      add_onu(*CONFD_GET_TAG_VALUE(&chunk->results[i].tv[0]), load);
    }
    load.onus += static_cast<std::uint32_t>(chunk->nresults);
    if (!load.error.empty()) {
      return;
    }
  }
}

/// Reads what the ONUs of the link reserve. Returns false if they cannot all be read.
bool read_link_load(int sock, const confd_trans_ctx* tctx, const std::string& slot,
                    const std::string& port, LinkLoad& load) {
  const std::string xpath =
      "/config/interface/gpon[chassis-id=1 and slot-id=" + slot + " and port-id=" + port + "]/onu";
  valid::Query onus(sock, tctx, xpath.c_str(), static_cast<int>(get_num_onus_per_ponlink()),
                    kLineProfileOfOnu);
  add_all_onus(onus, load);
  if (onus.failed()) {
    VALID_TRACE_AS(kPonlinkCheck, kTraceFlow, "query failed for onu. err=%s", confd_lasterr());
    return false;
  }
  return true;
}

std::string exceeds_text(const char* kind, const std::string& slot, const std::string& port,
                         std::uint32_t capacity) {
  return std::string(kind) + " bandwidth exceeds GPON interface 1/" + slot + "/" + port +
         " capacity (" + std::to_string(capacity) + " kbits/s)\n";
}

/// The sentences about the capacities that the load exceeds; empty if it fits.
std::string overload_text(const LinkLoad& load, const std::string& slot, const std::string& port) {
  const std::uint32_t overhead = load.onus * valid::kOverheadPerOnu;
  VALID_TRACE_AS(kPonlinkCheck, kTraceFlow,
                 "BW check: pl %s, fxd=%d, total=%d, overhead=%d (num_onus=%d)", port.c_str(),
                 static_cast<int>(load.fixed), static_cast<int>(load.total),
                 static_cast<int>(overhead), static_cast<int>(load.onus));
  std::string text;
  if (overhead + load.total > valid::kTotalCapacity) {
    text += exceeds_text("Total", slot, port, valid::kTotalCapacity);
  }
  if (load.fixed > valid::kFixedCapacity) {
    text += exceeds_text("Fixed", slot, port, valid::kFixedCapacity);
  }
  return text;
}

void load_model(int sock, confd_trans_ctx* tctx) {
  bandwidth_prof_to_bandwidth.clear();
  loadAllBws(sock, tctx);
  line_prof_to_bandwidth.clear();
  loadAllLines(sock, tctx);
}

std::string too_many_tconts(const std::string& line, std::uint32_t limit, const char* types) {
  return "Line Profile " + line + " cannot have more than " + std::to_string(limit) +
         " TCONTs with bandwidth traffic type " + types + ".";
}

/// The text for the first line profile beyond the card's TCONT limits; empty if all keep them.
std::string tcont_limit_text() {
  for (const auto& [line, sums] : line_prof_to_bandwidth) {
    if (sums.dynamic_count > valid::max_dynamic_tconts()) {
      return too_many_tconts(line, valid::max_dynamic_tconts(), "2 to 5");
    }
    if (sums.static_count > valid::max_static_tconts()) {
      return too_many_tconts(line, valid::max_static_tconts(), "1");
    }
  }
  return {};
}

/// Stops at the first result that is not 0, and returns it.
int check_all_links(int sock, confd_trans_ctx* tctx) {
  valid::Cursor links(sock, tctx, kGponLinks);
  while (links.next()) {
    const std::string slot = valid::value_text(&links.entry().keys[1]);
    const std::string port = valid::value_text(&links.entry().keys[2]);
    VALID_TRACE_AS(kGlobalCheck, kTraceDetail, "Check ponlink %s/%s bandwidth", slot.c_str(),
                   port.c_str());
    const int result = validate_ponlink_bw(sock, tctx, slot, port);
    if (result != CONFD_OK) {
      return result;
    }
  }
  return CONFD_OK;
}

}  // namespace

int validate_ponlink_bw(int sock, confd_trans_ctx* tctx, const std::string& slot,
                        const std::string& port) {
  LinkLoad load;
  if (!read_link_load(sock, tctx, slot, port, load)) {
    return CONFD_ERR;
  }
  if (!load.error.empty()) {
    VALID_TRACE(kTraceFlow, "There was some error during line-profile iteration (err=%d)",
                CONFD_ERR);
    return valid::reject(tctx, load.error.c_str());
  }
  const std::string text = overload_text(load, slot, port);
  return text.empty() ? CONFD_OK : valid::reject(tctx, text.c_str());
}

std::int32_t validate_max_bandwidth_ponlink(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_max_bandwidth_ponlink");
  const std::string slot = valid::value_text(&keypath->v[1][1]);
  const std::string port = valid::value_text(&keypath->v[1][2]);
  if (!get_do_bw_check()) {
    VALID_TRACE(kTraceFlow, "Bandwidth check disabled for this platform. PONLINK %s/%s",
                slot.c_str(), port.c_str());
    return trace.end(CONFD_OK);
  }
  VALID_TRACE(kTraceFlow, "Bandwidth check enabled for this platform. Do check now...");
  load_model(sock, tctx);
  return trace.end(validate_ponlink_bw(sock, tctx, slot, port));
}

std::int32_t validate_max_bandwidth_global(std::int32_t sock, confd_trans_ctx* tctx,
                                           confd_hkeypath_t* /*keypath*/,
                                           confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace(kGlobalCheck);
  load_model(sock, tctx);

  const std::string violation = tcont_limit_text();
  if (!violation.empty()) {
    return trace.end(valid::reject(tctx, violation.c_str()));
  }
  if (!get_do_bw_check()) {
    VALID_TRACE(kTraceFlow, "Bandwidth check disabled for this platform.");
    return trace.end(CONFD_OK);
  }
  VALID_TRACE(kTraceFlow,
              "Bandwidth check enabled for this platform. Do check now (all ponlinks)...");
  return trace.end(check_all_links(sock, tctx));
}
