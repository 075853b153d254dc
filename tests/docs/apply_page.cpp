// apply_page PAGE SOURCE TARGET: makes TARGET the tree SOURCE with the code blocks of the Markdown
// page applied, word for word. Only what differs is written, so that a build in TARGET goes on from
// the one before.
//
// A line such as "`src/validation/gpon_gem_tcont.h`:" makes the next block that file. A block in
// ```diff begins with "--- FILE"; its hunks are parted by "...". The lines of a hunk without "+" in
// front are in FILE, at one place only, and the lines with "+" join them there.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;  // contents by path

// What the folder of a build or of git holds is no source.
const std::set<std::string> kNotCopied{".git", "build"};

std::string read_file(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

Lines lines_of(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string text_of(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

struct Block {
  std::string language;
  std::string file;  // named by the line before the block; may be empty
  Lines lines;
};

/// "`path`:" at the end of a line, or at its beginning with words after it.
std::string file_named_in(const std::string& line) {
  if (line.empty() || line.front() != '`' || line.back() != ':') return "";
  const std::size_t end = line.find('`', 1);
  return end == std::string::npos ? "" : line.substr(1, end - 1);
}

std::vector<Block> blocks_of(const Lines& page) {
  const std::string fence = "```";
  std::vector<Block> blocks;
  std::string last_line;
  for (std::size_t i = 0; i < page.size(); ++i) {
    if (page[i].rfind(fence, 0) == 0) {
      Block block{page[i].substr(fence.size()), file_named_in(last_line), {}};
      for (++i; i < page.size() && page[i] != fence; ++i) block.lines.push_back(page[i]);
      blocks.push_back(block);
    }
    if (!page[i].empty()) last_line = page[i];
  }
  return blocks;
}

/// Where the lines are in the file; they have to be at one place.
std::size_t only_place_of(const Lines& wanted, const Lines& file) {
  const auto found = std::search(file.begin(), file.end(), wanted.begin(), wanted.end());
  if (wanted.empty() || found == file.end()) {
    throw std::runtime_error("has no such lines:\n" + text_of(wanted));
  }
  if (std::search(found + 1, file.end(), wanted.begin(), wanted.end()) != file.end()) {
    throw std::runtime_error("has these lines more than once:\n" + text_of(wanted));
  }
  return static_cast<std::size_t>(found - file.begin());
}

void apply_hunk(const Lines& hunk, Lines& file) {
  Lines before;
  Lines after;
  for (const std::string& line : hunk) {
    const bool added = !line.empty() && line.front() == '+';
    const bool removed = !line.empty() && line.front() == '-';
    const std::string content = line.empty() ? "" : line.substr(1);
    if (!added) before.push_back(content);
    if (!removed) after.push_back(content);
  }
  const auto place = file.begin() + static_cast<std::ptrdiff_t>(only_place_of(before, file));
  const auto rest = file.erase(place, place + static_cast<std::ptrdiff_t>(before.size()));
  file.insert(rest, after.begin(), after.end());
}

void apply_diff(const Lines& diff, Tree& tree) {
  const std::string name_mark = "--- ";
  if (diff.empty() || diff.front().rfind(name_mark, 0) != 0) {
    throw std::runtime_error("a diff does not begin with \"--- FILE\"");
  }
  const std::string name = diff.front().substr(name_mark.size());
  const auto found = tree.find(name);
  if (found == tree.end()) throw std::runtime_error("there is no file " + name);
  Lines file = lines_of(found->second);
  try {
    Lines hunk;
    for (std::size_t i = 1; i < diff.size(); ++i) {
      if (diff[i] == "...") {
        apply_hunk(hunk, file);
        hunk.clear();
      } else {
        hunk.push_back(diff[i]);
      }
    }
    apply_hunk(hunk, file);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(name + " " + error.what());
  }
  found->second = text_of(file);
}

Tree read_tree(const fs::path& folder) {
  Tree tree;
  for (auto entry = fs::recursive_directory_iterator(folder);
       entry != fs::recursive_directory_iterator(); ++entry) {
    if (entry.depth() == 0 && kNotCopied.contains(entry->path().filename().string())) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file()) {
      tree[fs::relative(entry->path(), folder).string()] = read_file(entry->path());
    }
  }
  return tree;
}

void write_tree(const Tree& tree, const fs::path& source, const fs::path& target) {
  fs::create_directories(target);
  for (const auto& [name, contents] : read_tree(target)) {
    if (!tree.contains(name)) fs::remove(target / name);
  }
  for (const auto& [name, contents] : tree) {
    const fs::path file = target / name;
    if (fs::exists(file) && read_file(file) == contents) continue;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
    if (fs::exists(source / name)) fs::permissions(file, fs::status(source / name).permissions());
  }
}

/// Applies the page and returns how many files it adds or changes.
std::size_t apply_page(const fs::path& page, Tree& tree) {
  std::set<std::string> touched;
  for (const Block& block : blocks_of(lines_of(read_file(page)))) {
    if (block.language == "diff") {
      apply_diff(block.lines, tree);
      touched.insert(block.lines.front());
    } else if (!block.file.empty()) {
      if (tree.contains(block.file)) throw std::runtime_error(block.file + " is there already");
      tree[block.file] = text_of(block.lines);
      touched.insert(block.file);
    }
  }
  return touched.size();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: apply_page PAGE SOURCE TARGET\n";
    return EXIT_FAILURE;
  }
  try {
    Tree tree = read_tree(argv[2]);
    if (apply_page(argv[1], tree) == 0) throw std::runtime_error("the page has no blocks to apply");
    write_tree(tree, argv[2], argv[3]);
  } catch (const std::exception& error) {
    std::cerr << "apply_page: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
