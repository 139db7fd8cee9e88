// gkgeom: measure and draw planar shapes with the gkgeom library from the command line.

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <thread>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "shape_file.h"

namespace {

using namespace gkgeom_tool;

int measureCommand(const std::vector<std::string>& files, bool asJson, unsigned jobs) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const std::string& file : files) {
    const std::vector<Shape> shapes = readShapeFile(file);
    const auto measured = measureAll(shapes, jobs, isatty(STDERR_FILENO) != 0 && shapes.size() > 1);
    // The file's name, not its path, so that reports compare across machines.
    const std::string name = std::filesystem::path(file).filename().string();
    if (asJson) {
      all.push_back({{"file", name}, {"shapes", measured}});
    } else {
      std::cout << "== " << name << "\n\n";
      writeReport(std::cout, measured);
    }
  }
  if (asJson) {
    std::cout << all.dump(2) << '\n';
  }
  return 0;
}

int drawCommand(const std::string& file, const std::string& output, const DrawOptions& options) {
  const std::vector<Shape> shapes = readShapeFile(file);
  writeFileAtomically(output, drawSvg(shapes, options, file));
  std::cout << "wrote " << output << '\n';
  return 0;
}

int demoCommand(const std::string& shapesDir, const std::string& outDir) {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(shapesDir, error)) {
    if (entry.path().extension() == ".json") {
      files.push_back(entry.path());
    }
  }
  if (error || files.empty()) {
    throw InputError(shapesDir + ": no example shapes (*.json) found");
  }
  std::sort(files.begin(), files.end());
  fs::create_directories(outDir, error);
  if (error) {
    throw InputError(outDir + ": cannot create the folder for the pictures");
  }
  DrawOptions everything{true, true, true, false, true};
  for (const fs::path& file : files) {
    const std::vector<Shape> shapes = readShapeFile(file.string());
    std::cout << "== " << file.filename().string() << "\n\n";
    writeReport(std::cout, measureAll(shapes, 1, false));
    const fs::path picture = fs::path(outDir) / (file.stem().string() + ".svg");
    writeFileAtomically(picture.string(), drawSvg(shapes, everything, file.filename().string()));
  }
  std::cout << "pictures written to " << outDir << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "gkgeom: measure and draw planar shapes (contours, regions with holes, region "
      "sets) with the gkgeom library"};
  app.require_subcommand(1);

  std::vector<std::string> measureFiles;
  bool asJson = false;
  unsigned jobs = std::max(1u, std::thread::hardware_concurrency());
  CLI::App* measure = app.add_subcommand("measure", "every measure of every shape in the files");
  measure->add_option("files", measureFiles, "JSON shape files")->required();
  measure->add_flag("--json", asJson, "machine-readable output");
  measure->add_option("--jobs", jobs, "worker threads (default: the number of cores)")
      ->check(CLI::Range(1u, 256u));

  std::string drawFile;
  std::string drawOutput;
  DrawOptions options;
  bool all = false;
  CLI::App* draw = app.add_subcommand("draw", "an SVG picture of the shapes in a file");
  draw->add_option("file", drawFile, "JSON shape file")->required();
  draw->add_option("-o,--output", drawOutput, "the SVG file to write")->required();
  draw->add_flag("--hull", options.hull, "add the convex hulls");
  draw->add_flag("--ellipse", options.ellipse, "add the fitted ellipses");
  draw->add_flag("--circle", options.circle, "add the enclosing circles (farthest pair)");
  draw->add_flag("--indices", options.indices, "number the vertices");
  draw->add_flag("--regularized", options.regularized, "add the regularized boundaries");
  draw->add_flag("--all", all, "all of the above");

  std::string shapesDir = GKGEOM_EXAMPLE_SHAPES_DIR;
  std::string outDir = "gkgeom-demo";
  CLI::App* demo = app.add_subcommand("demo", "measure and draw the bundled example shapes");
  demo->add_option("--shapes", shapesDir, "folder of example shape files");
  demo->add_option("--out", outDir, "folder for the pictures");

  CLI11_PARSE(app, argc, argv);
  try {
    if (measure->parsed()) {
      return measureCommand(measureFiles, asJson, jobs);
    }
    if (draw->parsed()) {
      if (all) {
        options = DrawOptions{true, true, true, true, true};
      }
      return drawCommand(drawFile, drawOutput, options);
    }
    if (demo->parsed()) {
      return demoCommand(shapesDir, outDir);
    }
  } catch (const InputError& e) {
    std::cerr << "gkgeom: " << e.what() << '\n';
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "gkgeom: " << e.what() << '\n';
    return 3;
  }
  return 1;
}
