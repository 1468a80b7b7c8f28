'use strict';
// The sandbox's dashboard: reads the JSON API under /api/ and follows the
// exchange log with long polls, so uploads appear without a reload.

const pageRows = 100;
const keptExchanges = 300;
const $ = (id) => document.getElementById(id);

function cell(text, className) {
  const td = document.createElement('td');
  td.textContent = text;
  if (className) td.className = className;
  return td;
}

function row(...cells) {
  const tr = document.createElement('tr');
  tr.append(...cells);
  return tr;
}

async function getJson(path) {
  const response = await fetch(path, { cache: 'no-store' });
  const body = await response.json();
  if (!response.ok) throw new Error(`${body.title}: ${body.detail}`);
  return body;
}

function bytes(count) {
  return count === 0 ? '-' : count.toLocaleString('en');
}

function verdictCell(upload) {
  return cell(upload.accepted ? 'accepted' : upload.verdict, upload.accepted ? 'accepted' : 'refused wrap');
}

// --- The list of uploads and the exchange log -------------------------------

let shownUploads = new Set();

async function showUploads() {
  const { uploads } = await getJson('/api/uploads');
  const rows = uploads.slice().reverse().map((upload) => {
    const link = document.createElement('a');
    link.href = `#/uploads/${upload.id}`;
    link.textContent = upload.recordNumber;
    const recordCell = cell('');
    recordCell.append(link);
    const tr = row(cell(upload.id, 'number'), recordCell, cell(upload.receivedAt.replace('T', ' ').replace('Z', '')),
      cell(bytes(upload.sizes.base64), 'number'), cell(bytes(upload.sizes.deflate), 'number'),
      cell(bytes(upload.sizes.json), 'number'), verdictCell(upload));
    tr.dataset.id = upload.id;
    if (shownUploads.size > 0 && !shownUploads.has(upload.id)) tr.classList.add('fresh');
    tr.addEventListener('click', () => { location.hash = `#/uploads/${upload.id}`; });
    return tr;
  });
  shownUploads = new Set(uploads.map((upload) => upload.id));
  $('uploads').tBodies[0].replaceChildren(...rows);
  $('no-uploads').hidden = uploads.length > 0;
}

function addExchanges(exchanges) {
  const body = $('exchanges').tBodies[0];
  for (const exchange of exchanges) {
    const status = exchange.status === null ? 'no answer' : String(exchange.status);
    const document = exchange.document === null ? '' : JSON.stringify(exchange.document);
    const tr = row(cell(exchange.sequence, 'number'), cell(exchange.time.slice(11, 23)),
      cell(exchange.exchange), cell(status, exchange.status === 200 ? 'accepted' : 'refused'),
      cell(exchange.milliseconds.toFixed(1), 'number'), cell(exchange.fault ?? ''),
      cell(document, 'value wrap'));
    tr.title = exchange.note;
    tr.classList.add('fresh');
    body.prepend(tr);
  }
  while (body.rows.length > keptExchanges) body.lastChild.remove();
}

async function follow() {
  // The first poll answers at once with what is there; later ones wait for news.
  let last = 0;
  let wait = 0;
  for (;;) {
    try {
      const news = await getJson(`/api/exchanges?after=${last}&wait=${wait}`);
      wait = 25;
      $('status').textContent = 'live';
      $('status').className = 'live';
      if (news.exchanges.length === 0) continue;
      last = news.last;
      addExchanges(news.exchanges);
      if (news.exchanges.some((exchange) => exchange.exchange === 'upload')) await showUploads();
    } catch (error) {
      $('status').textContent = 'sandbox unreachable, retrying';
      $('status').className = 'offline';
      await new Promise((resume) => setTimeout(resume, 2000));
    }
  }
}

// --- One upload, section by section -----------------------------------------

// Whether the problem of the upload lies in the section at `position` named `name`.
function inSection(problem, position, name) {
  if (!problem || problem.stage !== 'section') return false;
  return typeof problem.section === 'number' ? problem.section === position : problem.section === name;
}

function valueCell(value) {
  if (value === null) return cell('null', 'null value');
  if (Array.isArray(value)) {
    const td = cell(`${value.length} row${value.length === 1 ? '' : 's'}`, 'value');
    td.title = JSON.stringify(value);
    return td;
  }
  return cell(typeof value === 'string' ? value : JSON.stringify(value), 'value');
}

async function showSection(upload, position, offset) {
  const section = await getJson(`/api/uploads/${upload.id}/sections/${position}?offset=${offset}&limit=${pageRows}`);
  for (const item of $('sections').children) item.classList.toggle('current', Number(item.dataset.position) === position);
  $('section-title').textContent = `${section.name} · ${section.entries} ${section.entries === 1 ? 'row' : 'rows'}`;
  const width = Math.max(section.columns.length, ...section.rows.map((r) => (Array.isArray(r) ? r.length : 1)));
  const head = row(...['#', ...Array.from({ length: width }, (_, i) => `${i + 1} ${section.columns[i] ?? ''}`)]
    .map((text) => { const th = document.createElement('th'); th.textContent = text; return th; }));
  $('rows').tHead.replaceChildren(head);
  const problem = inSection(upload.problem, position, section.name) ? upload.problem : null;
  let marked = null;
  const rows = section.rows.map((values, i) => {
    const number = offset + i + 1;
    const cells = Array.isArray(values) ? values.map(valueCell) : [valueCell(values)];
    if (!Array.isArray(values)) cells[0].colSpan = width;
    const tr = row(cell(number, 'number'), ...cells);
    if (problem && (problem.row === number || (problem.row === null && problem.position !== null))) {
      tr.classList.add('problem');
      const target = cells[(problem.position ?? 1) - 1];
      if (target) target.classList.add('problem');
      marked = target ?? tr;
    }
    return tr;
  });
  $('rows').tBodies[0].replaceChildren(...rows);
  const pager = $('pager');
  pager.replaceChildren();
  if (section.entries > pageRows) {
    const page = (label, start) => {
      const button = document.createElement('button');
      button.textContent = label;
      button.disabled = start < 0 || start >= section.entries || start === offset;
      button.addEventListener('click', () => showSection(upload, position, start));
      return button;
    };
    pager.append(page('previous', offset - pageRows), page('next', offset + pageRows),
      ` rows ${offset + 1} to ${Math.min(offset + pageRows, section.entries)}`);
  }
  if (marked) marked.scrollIntoView({ block: 'center', inline: 'center' });
}

async function showUpload(id) {
  const upload = await getJson(`/api/uploads/${id}`);
  $('upload-title').textContent = `Upload ${upload.id}: record ${upload.recordNumber}`;
  $('upload-facts').replaceChildren(`received ${upload.receivedAt} · base64 ${bytes(upload.sizes.base64)} B · DEFLATE ` +
    `${bytes(upload.sizes.deflate)} B · JSON ${bytes(upload.sizes.json)} B · `,
    Object.assign(document.createElement('span'), {
      className: upload.accepted ? 'accepted' : 'refused', textContent: upload.accepted ? 'accepted' : 'refused',
    }));
  const problem = upload.problem;
  $('problem').hidden = !problem;
  if (problem) {
    const where = problem.text.slice(0, problem.text.length - problem.expected.length).replace(/: $/, '');
    $('problem').replaceChildren(Object.assign(document.createElement('strong'), { textContent: where || 'problem' }),
      document.createElement('br'), `${problem.expected}`);
  }
  $('download-dataset').href = `/api/uploads/${id}/dataset`;
  $('download-payload').href = `/api/uploads/${id}/payload`;
  const items = upload.sections.map((section) => {
    const li = document.createElement('li');
    li.dataset.position = section.position;
    li.append(section.name, Object.assign(document.createElement('span'), {
      className: 'quiet', textContent: section.note ? `${section.entries} · ${section.note}` : section.entries,
    }));
    if (inSection(problem, section.position, section.name)) li.classList.add('problem');
    li.addEventListener('click', () => showSection(upload, section.position, 0));
    return li;
  });
  $('sections').replaceChildren(...items);
  $('rows').tHead.replaceChildren();
  $('rows').tBodies[0].replaceChildren();
  $('section-title').textContent = items.length === 0 ? 'No section could be read.' : '';
  $('pager').replaceChildren();
  const failing = upload.sections.find((section) => inSection(problem, section.position, section.name));
  if (failing) {
    const start = problem.row ? Math.floor((problem.row - 1) / pageRows) * pageRows : 0;
    await showSection(upload, failing.position, start);
  } else if (items.length > 0) {
    await showSection(upload, 1, 0);
  }
}

// --- Navigation ---------------------------------------------------------------

async function route() {
  const match = location.hash.match(/^#\/uploads\/(\d+)$/);
  $('list-view').hidden = Boolean(match);
  $('upload-view').hidden = !match;
  try {
    if (match) await showUpload(Number(match[1]));
    else await showUploads();
  } catch (error) {
    $('status').textContent = error.message;
  }
}

window.addEventListener('hashchange', route);
route();
follow();
