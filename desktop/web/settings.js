// The settings form: every change goes out at once; what other viewers set comes in.

const languages = [
  ["ENG", "English"], ["ENU", "English (US)"], ["DEU", "Deutsch"], ["UKR", "Українська"], ["FRA", "Français"],
  ["ITA", "Italiano"], ["SPA", "Español"], ["NLD", "Nederlands"], ["POL", "Polski"], ["CES", "Čeština"],
  ["SLK", "Slovenčina"], ["HUN", "Magyar"], ["RON", "Română"], ["BGR", "Български"], ["RUS", "Русский"],
  ["TUR", "Türkçe"], ["DAN", "Dansk"], ["SVE", "Svenska"], ["NOR", "Norsk"], ["FIN", "Suomi"], ["PTG", "Português"],
  ["CAT", "Català"],
];
const countries = "01 AT AU BE BG BR CA CH CN CY CZ DE DK EE ES FI FR GB GR HK HR HU IE IN IS IT JP KR LI LT LU LV MT " +
  "MX NL NO NZ PL PT RO SE SI SK TW US";
const backgrounds = ["#ffffff", "#e8e2d6", "#c9d6df", "#bfcdb4", "#e3b7a0", "#7d8fa3", "#4a5a4e", "#3b3f46", "#1d2b3a",
  "#000000"];

const colorPause = 150; // ms between two colours

export class SettingsPanel {
  // apply(settings) sends them to the host.
  constructor(apply) {
    this.form = document.getElementById("settings");
    this.apply = apply;
    this.colorTimer = 0;
    this.fillLists();
    this.form.addEventListener("submit", event => event.preventDefault());
    this.form.addEventListener("change", event => this.onChange(event.target));
    this.form.elements.color.addEventListener("input", () => this.followColor());
  }

  fillLists() {
    for (const [code, name] of languages)
      this.form.elements.language.append(new Option(name, code));
    const names = new Intl.DisplayNames(["en"], { type: "region" });
    for (const code of countries.split(" "))
      this.form.elements.country.append(new Option(code === "01" ? "any" : names.of(code), code));
    const swatches = document.getElementById("swatches");
    for (const color of backgrounds) {
      const button = document.createElement("button");
      button.type = "button";
      button.style.background = color;
      button.setAttribute("aria-label", `Background ${color}`);
      button.addEventListener("click", () => {
        this.form.elements.color.value = color;
        this.apply({ color });
      });
      swatches.append(button);
    }
  }

  // While the colour dialogue is open the display follows, as fast as it can store a colour and no faster.
  followColor() {
    if (this.colorTimer)
      return;
    this.colorTimer = setTimeout(() => {
      this.colorTimer = 0;
      this.onChange(this.form.elements.color);
    }, colorPause);
  }

  onChange(field) {
    if (field.name && field.checkValidity())
      this.apply({ [field.name]: this.valueOf(field) });
  }

  valueOf(field) {
    if (field.type === "checkbox")
      return field.checked;
    return ["restMode", "restDelay", "dateFormat"].includes(field.name) ? Number(field.value) : field.value;
  }

  show(settings) {
    for (const [name, value] of Object.entries(settings)) {
      const field = this.form.elements[name];
      if (!field || field === document.activeElement)
        continue;
      if (field.type === "checkbox")
        field.checked = value;
      else
        field.value = value;
    }
  }
}
