// Max-Cut: splits the nodes of a weighted graph into two sides, so that the edges between the sides
// weigh as much as possible. One binary variable for the side of each node; an edge is cut where
// exactly one of its ends is 1. A graph that is drawn as a grid is shown with its two sides.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

struct Edge {
  uint64_t a, b;  // from 1
  long weight;
};

struct Graph {
  uint64_t nodes = 0, columns = 0;  // 0 columns: it is no grid
  std::vector<Edge> edges;
};

// "nodes edges", then "a b weight" for each edge; before them "# grid COLUMNS" for a grid.
Graph read_graph(std::istream& file) {
  Graph graph;
  for (std::string line, word; std::getline(file, line);) {
    std::istringstream words(line);
    Edge edge{};
    if (line.starts_with("# grid ")) {
      words >> word >> word >> graph.columns;
    } else if (line.starts_with('#')) {
      continue;
    } else if (graph.nodes == 0) {
      words >> graph.nodes;
    } else if (words >> edge.a >> edge.b >> edge.weight) {
      graph.edges.push_back(edge);
    }
  }
  return graph;
}

Expr cut_of(const Graph& graph, const Array<Var, 1>& side) {
  Expr cut;
  for (const auto& [a, b, weight] : graph.edges) {
    const Var x = side[a - 1], y = side[b - 1];
    cut += weight * (x + y - 2 * x * y);
  }
  return cut;
}

void print_grid(const Graph& graph, const Array<Integer, 1>& sides) {
  for (uint64_t i = 0; i < graph.nodes; ++i) {
    std::cout << (sides[i] == 1 ? "##" : " .");
    if ((i + 1) % graph.columns == 0) std::cout << "\n";
  }
}

int main(int argc, char** argv) {
  std::ifstream file(argc > 1 ? argv[1] : "");
  const Graph graph = read_graph(file);
  if (graph.edges.empty()) {
    std::cerr << "usage: maxcut GRAPH_FILE [SECONDS [CUT_TO_STOP_AT]]\n";
    return 2;
  }
  const auto side = var_array("side", {graph.nodes});
  const Expr cut = cut_of(graph, side);
  const Model model(-cut);
  std::cout << graph.nodes << " nodes, " << graph.edges.size() << " edges\n";

  Params params = {
      {"time_limit", argc > 2 ? argv[2] : "3"}, {"seed", 1}, {"enable_default_callback", true}};
  if (argc > 3) params.emplace_back("target_energy", -Integer(argv[3]));
  const Result result = EasySolver(model).search(params);

  if (graph.columns != 0) print_grid(graph, result.sol[side]);
  std::cout << "cut " << result.sol[cut] << ", found after " << result.sol.tts() << " s\n";
}
