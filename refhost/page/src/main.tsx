import "slickgrid/dist/styles/css/slick.grid.css";
import "./style.css";
import {render} from "preact";
import {App} from "./app";
import {whenOverviewComes} from "./base/load";

const nonce = document.currentScript?.dataset["styleNonce"] ?? "";
const page = document.getElementById("page")!;
page.textContent = "The report's data is missing: data/overview.js beside this page.";

whenOverviewComes(overview => {
  page.textContent = "";
  render(<App overview={overview} nonce={nonce} />, page);
});
